// Runs a fuzz target over files, and over the files of directories, where libFuzzer is not linked
// in.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

bool Replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  if (file.bad()) return false;
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  size_t replayed = 0;
  for (int i = 1; i < count; ++i) {
    std::vector<std::filesystem::path> paths{arguments[i]};
    if (std::filesystem::is_directory(arguments[i])) {
      paths.clear();
      for (const auto& entry : std::filesystem::directory_iterator(arguments[i])) {
        if (entry.is_regular_file()) paths.push_back(entry.path());
      }
    }
    for (const auto& path : paths) {
      if (!Replay(path)) {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        return 1;
      }
      ++replayed;
    }
  }
  std::printf("%zu inputs\n", replayed);
  return replayed == 0 ? 1 : 0;
}
