// A directory of the test's own that goes with it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

class QD_Temp_Dir {
public:
    QD_Temp_Dir()
    {
        char name[] = "/tmp/quendal-test-XXXXXX";
        path_ = mkdtemp(name);
    }
    ~QD_Temp_Dir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    QD_Temp_Dir(QD_Temp_Dir&&) = delete; // nor copied

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    std::string operator/(const std::string& name) const { return file(name); }

private:
    std::string path_;
};

/// A whole file, "" if it cannot be read.
inline std::string qd_read_file(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream all;
    all << in.rdbuf();
    return all.str();
}

inline void qd_write_file(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}
