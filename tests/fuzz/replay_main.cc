// Feeds one fuzzer its corpus: what seeded it and what it once found. usage: fuzz_NAME DIRECTORY
#include "tests/fuzz/fuzz.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

int main(int argc, char** argv)
{
    int replayed = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argc > 1 ? argv[1] : "")) {
        fprintf(stderr, "%s\n", entry.path().c_str()); // the last one is the culprit
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
        ++replayed;
    }
    return replayed > 0 ? 0 : 1;
}
