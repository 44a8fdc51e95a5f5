// panelkit tests: a temporary folder removed with everything in it when the test ends.
#include "TempDir.h"

#include <Poco/File.h>
#include <Poco/Path.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/stat.h>

namespace panelkit::test {

TempDir::TempDir()
{
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/panelkit-test-XXXXXX";
    if (!::mkdtemp(pattern.data()))
        throw std::runtime_error("cannot create a temporary folder");
    path_ = pattern;
}

TempDir::~TempDir()
{
    try {
        Poco::File(path_).remove(true);
    } catch (...) {
    }
}

void TempDir::write(const std::string& name, const std::string& content, bool executable) const
{
    const std::string full = *this / name;
    Poco::File(Poco::Path(full).parent()).createDirectories();
    std::ofstream(full, std::ios::binary) << content;
    if (executable)
        ::chmod(full.c_str(), 0755);
}

std::string TempDir::read(const std::string& name) const
{
    std::ifstream in(*this / name, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

bool TempDir::exists(const std::string& name) const
{
    struct stat info {};
    return ::stat((*this / name).c_str(), &info) == 0;
}

}  // namespace panelkit::test
