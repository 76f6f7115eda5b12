// Feeds one fuzzer its corpus: what seeded it and what it once found. usage: fuzz_NAME DIRECTORY
#include "tests/support/temp_dir.h"

#include <cstdint>
#include <cstdio>

extern "C" int llvm_fuzzer_test_one_input(const uint8_t* data, size_t size);

int main(int argc, char** argv)
{
    int replayed = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argc > 1 ? argv[1] : "")) {
        fprintf(stderr, "%s\n", entry.path().c_str()); // the last one is the culprit
        const std::string bytes = qd_read_file(entry.path());
        llvm_fuzzer_test_one_input(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
        ++replayed;
    }
    return replayed > 0 ? 0 : 1;
}
