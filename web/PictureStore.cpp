#include "web/PictureStore.h"

#include <map>
#include <utility>

#include "scene/PictureFile.h"

namespace qvweb {
namespace {

std::map<std::string, qvscene::Picture>& Store() {
  static std::map<std::string, qvscene::Picture> store;
  return store;
}

}  // namespace

void AddPicture(const std::string& file, qvscene::Picture picture) {
  Store()[file] = std::move(picture);
}

void ClearPictures() { Store().clear(); }

}  // namespace qvweb

namespace qvscene {

// The scene reader's picture input in the browser: the picture the page
// handed over under that name (already within the limits when it was
// exported).
bool ReadPictureFile(const std::string& path, Picture* picture, std::string* error,
                     std::uint64_t /*maxPixels*/) {
  const auto& store = qvweb::Store();
  const auto it = store.find(path);
  if (it == store.end()) {
    *error = "cannot open '" + path + "': not in the page";
    return false;
  }
  *picture = it->second;
  return true;
}

}  // namespace qvscene
