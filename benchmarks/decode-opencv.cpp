// Decodes a picture with OpenCV over and over, with the memory allocator as the system has it, and writes the processor
// time of one decoding in seconds.

#include <cstdio>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string_view>
#include <vector>

#include <opencv2/imgcodecs.hpp>

namespace {

bool Decode(const char* file, bool isFromMemory) {
  if (!isFromMemory) {
    return !cv::imread(file).empty();
  }
  std::ifstream stream(file, std::ios::binary | std::ios::ate);
  if (!stream) {
    return false;
  }
  std::vector<char> bytes(static_cast<std::size_t>(stream.tellg()));
  stream.seekg(0).read(bytes.data(), std::ssize(bytes));
  return !cv::imdecode(bytes, cv::IMREAD_COLOR).empty();
}

}  // namespace

int main(int argc, char** argv) {
  const bool isFromMemory = argc > 2 && std::string_view(argv[2]) == "memory";
  // The first makes the allocator adapt itself.
  if (argc < 2 || !Decode(argv[1], isFromMemory)) {
    return 1;
  }
  const std::clock_t begin = std::clock();
  std::clock_t end = begin;
  int count = 0;
  for (; end - begin < CLOCKS_PER_SEC / 5; end = std::clock()) {
    Decode(argv[1], isFromMemory);
    ++count;
  }
  std::printf("%.9f\n", static_cast<double>(end - begin) / CLOCKS_PER_SEC / count);
}
