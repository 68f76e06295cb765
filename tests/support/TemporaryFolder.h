// A folder for one test, gone with all that is in it when the test ends.
#pragma once

#include "tests/support/Test.h"

namespace osa::test {

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = (fs::temp_directory_path() / "osa-test-XXXXXX").string();
        const char* const made = ::mkdtemp(pattern.data());
        if (made == nullptr) std::abort();
        path_ = made;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string path(const std::string& name) const { return path_ + "/" + name; }

    /// Writes a file, with the folders it lies in, and answers its path.
    std::string write(const std::string& name, std::string_view content) const {
        const fs::path file = path(name);
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
        return file.string();
    }

  private:
    std::string path_;
};

}  // namespace osa::test
