#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace qvscene {

// The output files of one run, written so that a run either replaces all of
// them with complete files or changes none: each is written to a temporary
// file in its own directory, and all are renamed over their final names
// only once every one is complete. Outputs are regular files only, and no
// two outputs (nor an output and an input) may be the same file.
//
// While an Outputs object lives, the terminating signals that can be caught
// (SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXFSZ, SIGXCPU, SIGALRM,
// SIGUSR1, SIGUSR2, SIGVTALRM, SIGPROF) remove the temporary files before
// the process ends the way the signal asks. One object at a time.
class Outputs {
 public:
  // At most this many outputs in one run.
  static constexpr int kMaxOutputs = 64;

  Outputs();
  // Removes the temporary files not renamed yet and, unless committed, the
  // directories made for them.
  ~Outputs();
  Outputs(const Outputs&) = delete;
  Outputs& operator=(const Outputs&) = delete;

  // Adds an output. False with the reason in error when the name exists and
  // is not a regular file (a directory, a device, a FIFO, a socket, a
  // dangling link), or names the same file as an output added before
  // (compared by device and inode, or by the resolved path of files still to
  // be made). A symbolic link to a regular file is followed.
  bool Add(const std::string& name, std::string* error);
  // False with the reason when an output is the file at path (an input).
  bool NotInput(const std::string& path, std::string* error) const;

  // Makes the missing parent directories and an empty temporary file for
  // each output. False with the reason (naming the output and the system's
  // reason) after removing what it made.
  bool Create(std::string* error);
  // The temporary file that output i (in the order added) is written to.
  const std::string& Temp(std::size_t i) const { return entries_[i].temp; }

  // Renames every temporary file over its output, with the mode of the file
  // it replaces or the usual mode of a new file.
  bool Commit(std::string* error);

  // message with every temporary file name replaced by its output's name.
  std::string Explain(std::string message) const;

 private:
  struct Entry {
    std::string name;    // as given
    std::string target;  // the file renamed over: name with links resolved
    bool exists = false;
    dev_t device = 0;
    ino_t inode = 0;
    mode_t mode = 0;
    std::string temp;
  };
  std::vector<Entry> entries_;
  bool committed_ = false;
};

}  // namespace qvscene
