#include "conference/base/surroundings.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <unistd.h>

namespace fs = std::filesystem;

std::string qd_make_directory(const std::string& wanted)
{
    std::error_code error;
    fs::path path = wanted;
    if (wanted.empty()) {
        std::string fresh = (fs::temp_directory_path(error) / "quendal-XXXXXX").string();
        if (error || mkdtemp(fresh.data()) == nullptr) {
            perror("quendal-conference: cannot make a directory");
            return "";
        }
        path = fresh;
    } else {
        fs::create_directories(path, error);
    }
    const fs::path whole = fs::absolute(path, error);
    if (error || !fs::is_directory(whole, error)) {
        std::cerr << "quendal-conference: " << path.string() << " cannot be made" << std::endl;
        return "";
    }
    return whole.string();
}

std::string qd_find_client(const std::string& wanted)
{
    std::error_code error;
    const fs::path client = wanted.empty()
        ? fs::read_symlink("/proc/self/exe", error).parent_path() / "quendal"
        : fs::absolute(wanted, error);
    if (!error && ::access(client.c_str(), X_OK) == 0)
        return client.string();
    std::cerr << "quendal-conference: there is no client " << client.string()
              << "; name it with --client" << std::endl;
    return "";
}

int qd_complain(const std::string& trouble)
{
    std::cerr << "quendal-conference: " << trouble << std::endl;
    return QD_STATUS_TROUBLE;
}
