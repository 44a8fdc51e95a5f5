// Maker's utility library, simulated: command execution and the device's identity.
#include "qor_util/system.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sys/wait.h>

namespace qor_util {

namespace {

std::string IdentityFile(const char* name)
{
    const char* root = std::getenv("PANELKIT_DEVICE_ROOT");
    return std::string(root ? root : "") + "/etc/qor/" + name;
}

bool ReadFirstLine(const std::string& path, std::string& line)
{
    std::ifstream in(path);
    line.clear();
    return in && std::getline(in, line) && !line.empty();
}

}  // namespace

int system::exec(const std::string& command, std::string& output)
{
    output.clear();
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe)
        return -1;
    char chunk[4096];
    std::size_t got;
    while ((got = std::fread(chunk, 1, sizeof chunk, pipe)) > 0)
        output.append(chunk, got);
    const int status = ::pclose(pipe);
    if (status < 0)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string system::GetBarcodeASN(int* status)
{
    std::string number;
    const bool found = ReadFirstLine(IdentityFile("barcode_asn"), number);
    if (status)
        *status = found ? 0 : 1;
    return number;
}

int system::SetBarcodeASN(const std::string& number)
{
    if (number.empty() || number.find('\n') != std::string::npos)
        return 0;
    const std::string path = IdentityFile("barcode_asn");
    const std::string temporary = path + ".new";
    {
        std::ofstream out(temporary, std::ios::trunc);
        if (!(out << number << "\n"))
            return 0;
    }
    return std::rename(temporary.c_str(), path.c_str()) == 0 ? 1 : 0;
}

std::string system::GetDeviceID(int* status)
{
    static const std::regex valid("[0-9A-Fa-f]{4}(-[0-9A-Fa-f]{4}){2}");
    std::string id;
    int result = 0;
    if (!ReadFirstLine(IdentityFile("device_id"), id))
        result = 1;
    else if (!std::regex_match(id, valid))
        result = 2;
    if (status)
        *status = result;
    return id;
}

}  // namespace qor_util
