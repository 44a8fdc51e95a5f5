// panelkit tests: a temporary folder removed with everything in it when the test ends.
#pragma once

#include <string>

namespace panelkit::test {

/// A fresh folder under the system's temporary folder.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    /// The folder's absolute path.
    const std::string& path() const { return path_; }
    /// The path of a name inside the folder.
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }
    /// Writes a file (creating its folders), optionally executable.
    void write(const std::string& name, const std::string& content, bool executable = false) const;
    /// Reads a file of the folder, "" when missing.
    std::string read(const std::string& name) const;
    /// True when the name exists in the folder.
    bool exists(const std::string& name) const;

private:
    std::string path_;
};

}  // namespace panelkit::test
