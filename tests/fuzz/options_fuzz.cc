#include "signalling/options_file.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/temp_dir.h"

#include <cstring>

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
    qd_require(strlen(options.local_name) < 50 && strlen(options.email) < 100
        && strlen(options.server_name) < 100);
    uint8_t image[_options::IMAGE_SIZE];
    options.encode(image);
    // What is no text is as it was.
    for (size_t at = 0; whole && at < 280; ++at)
        qd_require(image[at] == static_cast<uint8_t>(file[at]) || (at >= 8 && at < 260));
}
