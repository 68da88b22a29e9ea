// A tiny scene of 8 x 4 pixels, written with its pictures into a directory,
// for tests that need to know every pixel and colour.
#pragma once

#include <string>

#include "ToolTestUtil.h"

namespace tooltest {

// pal.png: 8 x 4, palette entry i = (i, 255 - i, 7i mod 256).
// spr.png: 2 x 2 with the pixels 3 5 / 6 0 (0 is transparent).
inline const qvscene::Picture& TinyPicture() {
  static const qvscene::Picture p = MakePicture(8, 4, {1, 2, 3, 4, 5, 6, 7, 1,  //
                                                       4, 5, 6, 7, 4, 5, 6, 7,  //
                                                       8, 8, 9, 9, 4, 4, 5, 5,  //
                                                       7, 6, 5, 4, 3, 2, 1, 0});
  return p;
}

inline void WriteTinyPictures(const TempDir& dir) {
  SavePicture(dir / "pal.png", TinyPicture());
  SavePicture(dir / "spr.png", MakePicture(2, 2, {3, 5, 6, 0}));
}

// The scene: one member showing pal.png whole, its indices 4 to 7 cycling.
// Keys stand one per line so that tests can find the line of each.
inline const char* TinySceneText() {
  return R"({
  "output": {
    "width": 8,
    "height": 4,
    "to": 5,
    "palette": "pal"
  },
  "pictures": {
    "pal": "pal.png",
    "spr": "spr.png"
  },
  "members": [
    {
      "name": "m",
      "picture": "pal",
      "frames": [
        {
          "rect": [0, 0, 8, 4],
          "zoom": 1.0
        }
      ],
      "colors": [
        {
          "kind": "cycle",
          "area": [[4, 7]]
        }
      ]
    }
  ],
  "layers": [
    {
      "members": ["m"]
    }
  ]
}
)";
}

// Line (from 1) of the first occurrence of marker in text, 0 when absent.
inline int LineOfText(const std::string& text, const std::string& marker) {
  const std::size_t at = text.find(marker);
  if (at == std::string::npos) return 0;
  return 1 + static_cast<int>(std::count(text.begin(), text.begin() + static_cast<long>(at), '\n'));
}

// text with the first occurrence of from replaced by to.
inline std::string Replace(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  if (at != std::string::npos) text.replace(at, from.size(), to);
  return text;
}

}  // namespace tooltest
