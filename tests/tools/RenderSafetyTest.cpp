// qvmovie-render against a hostile user: outputs that are not regular files
// or name one file twice, signals and file size limits during a render,
// inputs that are not regular files, numbers out of range and scenes that
// would need more memory than the limit. Every refusal exits 2 naming what
// is wrong (file, line and JSON path for the scene); no failed run changes a
// file or leaves a temporary file behind.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <zlib.h>

#include <map>
#include <thread>

#include "ToolTestUtil.h"

namespace {

using namespace tooltest;

class HostileRender : public ::testing::Test {
 protected:
  void SetUp() override {
    WriteTinyPictures(dir_);
    WriteText(dir_ / "s.json", TinySceneText());
    WriteText(dir_ / "keep.gif", "keep");
    WriteText(dir_ / "plain", "x");
  }
  RunResult Render(const std::string& args) {
    return RunCommand(std::string(QV_RENDER_TOOL) + " " + args, scratch_);
  }
  // Every name under the directory with its inode, type, size and
  // modification time: a file written or replaced changes one of them.
  std::map<std::string, std::string> Snapshot() const {
    std::map<std::string, std::string> files;
    for (const auto& e : fs::recursive_directory_iterator(dir_.Path())) {
      struct stat st;
      if (lstat(e.path().c_str(), &st) != 0) continue;
      files[e.path().string()] = std::to_string(st.st_ino) + " " + std::to_string(st.st_mode) +
                                 " " + std::to_string(st.st_size) + " " +
                                 std::to_string(st.st_mtim.tv_sec) + "." +
                                 std::to_string(st.st_mtim.tv_nsec);
    }
    return files;
  }
  // Runs the tool with args and checks that it exits 2 with message and
  // changes nothing.
  void Refused(const std::string& args, const std::string& message) {
    SCOPED_TRACE(args);
    const auto before = Snapshot();
    const RunResult r = Render(args);
    EXPECT_EQ(2, r.exitCode) << r.text;
    EXPECT_TRUE(Contains(r.text, message)) << r.text << "\nexpected: " << message;
    EXPECT_TRUE(before == Snapshot());
  }
  // The scene text with from replaced by to, written to s.json, and the
  // start of the message naming the line of to: "s.json:LINE: ".
  std::string Scene(const std::string& from, const std::string& to) {
    const std::string text = Replace(TinySceneText(), from, to);
    WriteText(dir_ / "s.json", text);
    return dir_ / "s.json:" + std::to_string(LineOfText(text, to)) + ": ";
  }
  TempDir dir_;
  TempDir scratch_;  // for the tool's messages, outside dir_
};

TEST_F(HostileRender, OutputsMustBeRegularFilesAndDistinctAndNoFailedRunChangesAny) {
  const std::string s = dir_ / "s.json ";
  ASSERT_EQ(0, mkfifo((dir_ / "fifo").c_str(), 0600));
  fs::create_directory(dir_ / "dir");
  fs::create_directory(dir_ / "d");
  fs::create_symlink(dir_ / "keep.gif", dir_ / "link.gif");
  fs::create_hard_link(dir_ / "keep.gif", dir_ / "hard.gif");
  fs::create_symlink(dir_ / "none", dir_ / "nowhere.gif");
  const std::string keep = "-o " + dir_ / "keep.gif";
  // A device: a null device of our own where we may make one (as root, who
  // could replace /dev/null), else /dev/null itself.
  const std::string device = mknod((dir_ / "null").c_str(), S_IFCHR | 0666, makedev(1, 3)) == 0
                                 ? dir_ / "null"
                                 : "/dev/null";
  const std::pair<std::string, std::string> cases[] = {
      {"-o " + dir_ / "fifo",
       "output '" + dir_ / "fifo' exists and is not a regular file but a FIFO"},
      {keep + " --png-at 0 " + dir_ / "dir", "but a directory"},
      {"-o " + device,
       "output '" + device + "' exists and is not a regular file but a character device"},
      {"-o " + dir_ / "d/o.gif --png-at 0 " + dir_ / "d/./o.gif",
       "outputs '" + dir_ / "d/o.gif' and '" + dir_ / "d/./o.gif' are the same file"},
      {keep + " --png-at 0 " + dir_ / "link.gif", "are the same file"},
      {keep + " --png-at 0 " + dir_ / "hard.gif", "are the same file"},
      {"-o " + dir_ / "d/../keep.gif --sheet " + dir_ / "keep.gif", "are the same file"},
      {"-o " + dir_ / "nowhere.gif", "is a symbolic link to nothing"},
      {"-o " + dir_ / "plain/o.gif", "cannot write '" + dir_ / "plain/o.gif': Not a directory"},
      {"-o " + dir_ / "new/dir/t.gif --png-at 0 " + dir_ / "plain/t.png", "Not a directory"},
      {"-o " + dir_ / "s.json", "output '" + dir_ / "s.json' is the input '" + dir_ / "s.json'"},
      {"--png-at 0 " + dir_ / "pal.png", "is the input '" + dir_ / "pal.png'"},
  };
  for (const auto& c : cases) Refused(s + c.first, c.second);

  // A name as long as the file system allows still has room for its
  // temporary file; missing directories are made; a link is written through
  // and the file keeps its mode; new files get the usual mode.
  fs::permissions(dir_ / "keep.gif", fs::perms(0640));
  const std::string longName = dir_ / (std::string(251, 'n') + ".gif");
  ASSERT_EQ(0, Render(s + "-o " + longName + " --png-at 0 " + dir_ / "new/dir/t.png " + "--sheet " +
                      dir_ / "link.gif")
                   .exitCode);
  EXPECT_TRUE(fs::is_regular_file(longName) && fs::is_regular_file(dir_ / "new/dir/t.png"));
  EXPECT_TRUE(fs::is_symlink(dir_ / "link.gif"));
  EXPECT_EQ("\x89PNG", Slurp(dir_ / "keep.gif").substr(0, 4));
  // Two renders to one output at once: each writes its own temporary file,
  // and the output is one whole GIF.
  const std::string render = std::string(QV_RENDER_TOOL) + " " + s + "-q -o " + dir_ / "both.gif";
  const RunResult twice = RunCommand(
      "{ " + render + " & p=$!; " + render + "; a=$?; wait $p; exit $((a | $?)); }", scratch_);
  EXPECT_EQ(0, twice.exitCode) << twice.text;
  const std::string both = Slurp(dir_ / "both.gif");
  EXPECT_TRUE(both.size() > 6 && both.compare(0, 6, "GIF89a") == 0 && both.back() == ';');
  const mode_t mask = umask(0);
  umask(mask);
  EXPECT_EQ(Ints(0640, 0666 & ~mask),
            Ints(fs::status(dir_ / "keep.gif").permissions() & fs::perms::all,
                 fs::status(longName).permissions() & fs::perms::all));
  EXPECT_FALSE(dir_.HasPartial());
}

// A render ended by a signal, or by the file size limit, removes its
// temporary files and the directories it made, and leaves the outputs as
// they were. With SIGXFSZ ignored the write fails instead: exit 1, naming
// the output rather than its temporary file.
TEST_F(HostileRender, SignalsAndTheFileSizeLimitLeaveNothingBehind) {
  WriteText(dir_ / "s.json",
            Replace(TinySceneText(), "\"width\": 8,\n    \"height\": 4,\n    \"to\": 5",
                    "\"width\": 4096, \"height\": 4096, \"to\": 3000"));
  const auto before = Snapshot();
  const std::string log = scratch_ / "log";
  const int cases[] = {SIGINT,  SIGTERM, SIGHUP,  SIGQUIT,  SIGPIPE, SIGUSR1,
                       SIGALRM, SIGXCPU, SIGXFSZ, -SIGXFSZ, 0};  // -: limit, 0: limit, ignored
  for (const int sig : cases) {
    SCOPED_TRACE(sig);
    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      for (int s : {SIGINT, SIGQUIT, SIGPIPE, SIGXFSZ}) signal(s, SIG_DFL);
      if (sig <= 0) {
        const rlimit limit{4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        if (sig == 0) signal(SIGXFSZ, SIG_IGN);
      }
      const std::string s = dir_ / "s.json", gif = dir_ / "keep.gif", png = dir_ / "new/n.png";
      if (!freopen(log.c_str(), "w", stderr)) _exit(99);
      execl(QV_RENDER_TOOL, QV_RENDER_TOOL, s.c_str(), "-q", "--png-at", "0", png.c_str(), "-o",
            gif.c_str(), static_cast<char*>(nullptr));
      _exit(98);
    }
    if (sig > 0) {
      for (int i = 0; i < 1000 && !dir_.HasPartial(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      }
      kill(pid, sig);
    }
    int status = 0;
    ASSERT_EQ(pid, waitpid(pid, &status, 0));
    if (sig != 0) {
      EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == std::abs(sig)) << status;
    } else {
      EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << status;
      EXPECT_TRUE(Contains(Slurp(log), "cannot write '" + dir_ / "keep.gif'")) << Slurp(log);
    }
    EXPECT_TRUE(before == Snapshot());
  }
}

// A PNG whose header claims width x height pixels, with a palette of one
// entry and no image data.
void WritePngHeader(const std::string& path, std::uint32_t width, std::uint32_t height) {
  auto be32 = [](std::size_t v) {
    std::string s;
    for (int i = 0; i < 4; ++i) s += static_cast<char>(v >> (24 - 8 * i));
    return s;
  };
  std::string bytes("\x89PNG\r\n\x1a\n", 8);
  for (const std::string& chunk :  // type and data; 8 bits, indexed
       {"IHDR" + be32(width) + be32(height) + std::string("\x08\x03\0\0\0", 5),
        std::string("PLTE\0\0\0", 7), std::string("IDAT"), std::string("IEND")}) {
    bytes += be32(chunk.size() - 4) + chunk +
             be32(crc32(0, reinterpret_cast<const Bytef*>(chunk.data()),
                        static_cast<uInt>(chunk.size())));
  }
  WriteText(path, bytes);
}

TEST_F(HostileRender, InputsMustBeRegularFilesOfBoundedSizeAndMemory) {
  const std::string out = " -o " + dir_ / "out.gif";
  const std::string s = dir_ / "s.json";
  ASSERT_EQ(0, mkfifo((dir_ / "fifo").c_str(), 0600));
  fs::create_directory(dir_ / "dir");
  { std::ofstream big(dir_ / "big.json"); }
  fs::resize_file(dir_ / "big.json", (4u << 20) + 1);
  // Files that are not regular files, or too large, as the scene.
  const std::pair<std::string, std::string> files[] = {
      {dir_ / "fifo", dir_ / "fifo: not a regular file but a FIFO"},
      {dir_ / "dir", dir_ / "dir: not a regular file but a directory"},
      {"/dev/zero", "/dev/zero: not a regular file but a character device"},
      {dir_ / "big.json", dir_ / "big.json: larger than 4 MB"},
  };
  for (const auto& c : files) Refused(c.first + out, c.second);
  fs::remove(dir_ / "big.json");

  // Pictures that are not regular files or would not fit in memory.
  WritePngHeader(dir_ / "huge.png", 32767, 32767);
  SavePicture(dir_ / "wide.png", MakePicture(2048, 2048, {}));
  const std::string pic = "/pictures/pal: cannot read '" + dir_.Path();
  const std::pair<const char*, std::string> pictures[] = {
      {"fifo", pic + "/fifo': not a regular file but a FIFO"},
      {"dir", pic + "/dir': not a regular file but a directory"},
      {"huge.png", "/pictures/pal: '" + dir_.Path() +
                       "/huge.png' is 32767 x 32767 pixels, more than the memory limit"}};
  for (const auto& c : pictures) Refused(s + out, Scene("pal.png", c.first) + c.second);

  // Numbers out of range, too many moments, images that wrap around or
  // need too much memory, too deep a nesting.
  const std::string frame = "/members/0/frames/0/";
  const std::pair<std::pair<const char*, const char*>, std::string> values[] = {
      {{"\"to\": 5", "\"to\": 1e400"}, "/output/to: number out of range: 1e400"},
      {{"\"to\": 5", "\"to\": -1e999"}, "/output/to: number out of range: -1e999"},
      {{"\"zoom\": 1.0", "\"zoom\": 1e309"}, frame + "zoom: number out of range: 1e309"},
      {{"\"to\": 5", "\"to\": 20000"}, "/output/to: more than 20000 moments to render"},
      {{"\"to\": 5", "\"to\": 1e20"}, "/output/to: out of range: 1e+20"},
      {{"\"zoom\": 1.0", "\"anchor\": [32767, -32768], \"zoom\": 16, \"rotation\": 90"},
       frame + "anchor: zoomed and rotated about its anchor, the image of this frame would be more "
               "than 32767 pixels wide or high"},
  };
  for (const auto& c : values) Refused(s + out, Scene(c.first.first, c.first.second) + c.second);
  const std::string wide = Replace(TinySceneText(), "pal.png", "wide.png");
  WriteText(s, Replace(Replace(wide, "[0, 0, 8, 4]", "[0, 0, 2048, 2048]"), "1.0", "15.99"));
  Refused(s + out, s + ":15: " + frame +
                       "zoom: the image of this frame (32731 x 32731 pixels, zoomed and rotated) "
                       "needs about 4095 MB");
  WriteText(s, std::string(100000, '[') + std::string(100000, ']'));
  Refused(s + out, s + ":1: /0/0/0/");

  // The outputs' own needs: a sheet, a scale. The limit can be lowered and
  // raised.
  WriteText(s, Replace(Replace(TinySceneText(), "\"width\": 8", "\"width\": 4096"), "\"height\": 4",
                       "\"height\": 4096"));
  const std::string over = "over the memory limit of 512 MB (raise it with --max-memory)";
  Refused(s + " --sheet " + dir_ / "s.png --sheet-times 0,1,2,3 --scale 8", s + ":2: /output: ");
  Refused(s + " --sheet " + dir_ / "s.png --sheet-times 0,1,2,3 --scale 8", over);
  std::string times = "0";
  for (int t = 1; t < 100; ++t) times += "," + std::to_string(t % 6);
  Refused(s + " --sheet " + dir_ / "s.png --sheet-times " + times, over);
  Refused(s + " --max-memory 32 --png-at 0 " + dir_ / "t.png", "over the memory limit of 32 MB");
  Refused(s + " --max-memory 0 --png-at 0 " + dir_ / "t.png", "--max-memory: '0' is not");
  EXPECT_EQ(0, Render(s + " --max-memory 64 --png-at 0 " + dir_ / "t.png").exitCode);
}

}  // namespace
