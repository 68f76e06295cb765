// Where a compiled script goes: a file, or the main script of a bundle.
#pragma once

#include <CoreServices/Files.h>

#include <string>
#include <vector>

namespace osa::cli {

/// What is made for it is taken away again unless it is kept; what was there before stays.
class CompileOutput {
  public:
    /// A name that ends in ".scptd" is a bundle's.
    explicit CompileOutput(const std::string& path);
    ~CompileOutput();
    CompileOutput(const CompileOutput&) = delete;
    CompileOutput& operator=(const CompileOutput&) = delete;

    /// Whether the last component of `path` ends in `extension`, in whatever case.
    static bool isNamed(const std::string& path, const char* extension);
    static bool isBundleName(const std::string& path) { return isNamed(path, ".scptd"); }

    /// Makes what is missing: an empty file, and for a bundle its folders and its property list,
    /// which says that it is a script bundle and bears the folder's name. Answers why that failed,
    /// or nothing.
    std::string open();
    /// The file that holds the script.
    const std::string& file() const { return file_; }
    const FSRef& ref() const { return ref_; }
    void keep() { made_.clear(); }

  private:
    /// Nothing, or why not.
    std::string makeFolder(const std::string& path);
    std::string makeFile(const std::string& path, const std::string& content);
    std::string makeBundle();

    std::string bundle_;  ///< empty for a file
    std::string file_;
    FSRef ref_{};
    std::vector<std::string> made_;  ///< what lies inside behind what it lies in
};

}  // namespace osa::cli
