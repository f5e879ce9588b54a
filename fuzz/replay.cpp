#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz_support.h"

/// Takes every file of a directory through the fuzzer's function once.
int main(int argc, char* argv[]) {
  if (argc != 2) return 2;
  std::vector<std::filesystem::path> inputs;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
    inputs.push_back(entry.path());
  }
  std::ranges::sort(inputs);
  for (const auto& input : inputs) {
    std::printf("%s\n", input.filename().c_str());
    std::fflush(stdout);
    std::ifstream file(input, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  }
  return inputs.empty() ? 1 : 0;
}
