// What all tests share.
#include "tests/library/Support.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <unistd.h>
#include <utility>

namespace {

std::string FolderMake() {
    std::random_device random;
    for (;;) {
        const std::filesystem::path path =
            std::filesystem::temp_directory_path() / ("quarrinet-test-" + std::to_string(random()));
        if (std::filesystem::create_directory(path)) {
            return path.string();
        }
    }
}

} // namespace

std::string Captured(const std::function<void()>& action) {
    const TemporaryFolder folder;
    const std::string path = folder.Write("captured", std::string());
    std::fflush(stdout);
    const int kept = dup(STDOUT_FILENO);
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    if (kept < 0 || file == nullptr || dup2(fileno(file), STDOUT_FILENO) < 0) {
        std::abort();
    }
    std::fclose(file);
    action();
    std::fflush(stdout);
    dup2(kept, STDOUT_FILENO);
    close(kept);
    std::ifstream output(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(output), std::istreambuf_iterator<char>()};
}

ArgumentVector::ArgumentVector(std::vector<std::string> texts) : Texts(std::move(texts)) {
    for (std::string& text : Texts) {
        Pointers.push_back(text.data());
    }
    Pointers.push_back(nullptr);
}

std::vector<std::string> Behind(const std::string& program, const std::vector<std::string>& words) {
    std::vector<std::string> all{program};
    all.insert(all.end(), words.begin(), words.end());
    return all;
}

TemporaryFolder::TemporaryFolder() : Path(FolderMake()) {}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(Path, ignored);
}

std::string TemporaryFolder::Write(const std::string& name, const std::string& content) const {
    std::string path = Path + "/" + name;
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

std::string TemporaryFolder::Write(const std::string& name, const std::vector<std::uint8_t>& content) const {
    return Write(name, std::string(content.begin(), content.end()));
}
