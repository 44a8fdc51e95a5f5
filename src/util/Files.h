// panelkit util: files, folder listings, text and certificate names, read in-process.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace panelkit::util {

/// What FindFiles keeps.
enum class FindFilesType { Regular = 0, Directory = 1, Any = 2 };

/// True for a character that occurs in the held set.
struct containsChars {
    /// The characters to look for.
    std::string chars;
    /// True when c is one of the characters.
    bool operator()(char c) const { return chars.find(c) != std::string::npos; }
};

/// True when the path exists.
bool FileExists(const std::string& path);
/// Up to maxBytes from the start of the file into out; false when it cannot be read.
bool ReadFileHead(const std::string& path, std::size_t maxBytes, std::string& out);
/// What `cat PATH 2>&1` prints: the file's bytes, or "cat: PATH: <reason>\n" when it cannot be read;
/// at most maxBytes, cut as Bounded cuts.
std::string CatFile(const std::string& path, std::size_t maxBytes);
/// What `tail -n LINES PATH` prints on its standard output: the last lines (a last line without a
/// newline counts), "" when the file cannot be read; at most maxBytes, cut as Bounded cuts.
std::string TailFile(const std::string& path, std::size_t lines, std::size_t maxBytes);
/// The file's size, 0 when it cannot be read.
unsigned FileSize(const std::string& path);
/// Moves a file, across file systems too; false when it could not.
bool MoveFile(const std::string& from, const std::string& to);
/// The names in dir matching the POSIX extended expression, in directory order.
std::vector<std::string> FindFiles(const std::string& dir, FindFilesType type, const std::string& pattern);
/// The text without any of the characters in chars.
std::string StripChars(const std::string& text, const std::string& chars);
/// Reads the issuer and subject of the certificate between <cert> and </cert> in the file.
bool GetCertificateDetails(const std::string& path, std::string& issuer, std::string& subject);

}  // namespace panelkit::util
