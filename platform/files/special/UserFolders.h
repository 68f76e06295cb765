// Where the user's folders are: below the host's root, or as the environment says.
#pragma once

#include <string>
#include <vector>

namespace osa {

class UserFolders {
  public:
    UserFolders();

    /// Below the host's root: neither the environment nor the machine's folders count.
    bool isRedirected() const { return isRedirected_; }
    /// Empty when the user has none.
    const std::string& home() const { return home_; }
    std::string data() const { return fromEnvironment("XDG_DATA_HOME", home_ + "/.local/share"); }
    std::string configuration() const {
        return fromEnvironment("XDG_CONFIG_HOME", home_ + "/.config");
    }
    std::string temporary() const {
        return isRedirected_ ? home_ + "/tmp" : fromEnvironment("TMPDIR", "/tmp");
    }
    /// A folder inside ~/Library where there is one, else where the environment puts its like.
    std::string library(const char* name, const char* variable, const char* below) const;
    /// The folder that user-dirs.dirs gives the key, else the one of that name in the home.
    std::string named(const char* key, const char* otherwise) const;

    /// The folders of a list of absolute paths with ":" between them; others are left out. Empty
    /// when redirected.
    std::vector<std::string> listed(const char* variable, const char* otherwise) const;

  private:
    std::string fromEnvironment(const char* variable, std::string otherwise) const;

    std::string home_;
    bool isRedirected_;
};

/// What OSASetApplicationFolders was told: absolute paths.
std::vector<std::string> hostApplicationFolders();

}  // namespace osa
