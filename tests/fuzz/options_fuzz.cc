#include "signalling/options_file.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/temp_dir.h"

#include <array>

// The file, as it is.
void qd_fuzz(QD_Fuzz_Input input)
{
    static const QD_Temp_Dir home;
    setenv("HOME", home.path().c_str(), 1);
    const std::string file = input.rest();
    qd_write_file(home.file(".qd.cfg"), file);

    _options options;
    const bool whole = qd_read_options_file(&options) == 0;
    qd_require(whole == (file.size() >= _options::IMAGE_SIZE));
    std::array<uint8_t, _options::IMAGE_SIZE> once {};
    std::array<uint8_t, _options::IMAGE_SIZE> twice {};
    options.encode(once); // texts without an end would be read beyond their field
    _options::decode(once).encode(twice);
    qd_require(once == twice);
}
