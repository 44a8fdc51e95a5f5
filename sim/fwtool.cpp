// The simulated firmware tool: checks an image, reports progress in the status file the
// firmware page reads, and holds the tool's lock while it runs, as the device's tool does.
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

const unsigned char kMagic[4] = {0xD0, 0x0D, 0xFE, 0xED};

int Usage()
{
    std::fputs("usage: fwtool --root ROOT --upgrade FILE [--delete] [--create-ubi-volume] [--unmount-ubi-volume]\n"
               "       fwtool --root ROOT -s\n",
               stderr);
    return 2;
}

std::string Status(const char* state, long long received, long long size)
{
    std::ostringstream line;
    line << "{ 'state' : '" << state << "', 'received' : " << received << ", 'size' : " << size << " }";
    return line.str();
}

// Readers take a shared lock on the status file, so it is rewritten under an exclusive one.
void WriteStatus(const std::string& path, const std::string& line)
{
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT, 0644);
    if (fd < 0)
        return;
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    ::fcntl(fd, F_SETLKW, &lock);
    const std::string text = line + "\n";
    if (::ftruncate(fd, 0) == 0 && ::write(fd, text.data(), text.size()) < 0)
        std::perror("fwtool: status");
    lock.l_type = F_UNLCK;
    ::fcntl(fd, F_SETLK, &lock);
    ::close(fd);
}

bool HasMagic(const std::string& image)
{
    std::ifstream in(image, std::ios::binary);
    unsigned char head[4] = {};
    return in.read(reinterpret_cast<char*>(head), 4) && std::memcmp(head, kMagic, 4) == 0;
}

int Upgrade(const std::string& root, const std::string& image, bool remove)
{
    const std::string lockPath = root + "/tmp/fwtool_6v1Znb.lock";
    const std::string statusPath = root + "/tmp/fwtool_status.txt";
    const int lockFd = ::open(lockPath.c_str(), O_RDWR | O_CREAT, 0644);
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    if (lockFd < 0 || ::fcntl(lockFd, F_SETLK, &lock) != 0) {
        std::fprintf(stderr, "fwtool: another upgrade is running (%s)\n", std::strerror(errno));
        return 1;
    }
    struct stat info {};
    const long long size = ::stat(image.c_str(), &info) == 0 ? static_cast<long long>(info.st_size) : 0;
    const char* seconds = std::getenv("PANELKIT_SIM_FWTOOL_SECONDS");
    const double duration = seconds ? std::atof(seconds) : 15.0;
    const int steps = duration > 0 ? static_cast<int>(duration * 2) : 0;
    const auto pause = std::chrono::milliseconds(500);

    WriteStatus(statusPath, Status("checking", 0, size));
    const bool good = size > 0 && HasMagic(image);
    if (good) {
        for (int step = 1; step <= steps; ++step) {
            std::this_thread::sleep_for(pause);
            WriteStatus(statusPath, Status("writing", size * step / steps, size));
        }
    }
    WriteStatus(statusPath, good ? Status("done", size, size) : Status("failed", 0, size));
    if (remove)
        ::unlink(image.c_str());
    lock.l_type = F_UNLCK;
    ::fcntl(lockFd, F_SETLK, &lock);
    ::close(lockFd);
    return good ? 0 : 1;
}

int PrintStatus(const std::string& root)
{
    std::ifstream in(root + "/tmp/fwtool_status.txt");
    std::string line;
    std::puts(in && std::getline(in, line) ? line.c_str() : "{ 'state' : 'idle' }");
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    std::string root;
    std::string image;
    bool upgrade = false;
    bool status = false;
    bool remove = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--root" && i + 1 < argc)
            root = argv[++i];
        else if (arg == "--upgrade" && i + 1 < argc) {
            upgrade = true;
            image = argv[++i];
        } else if (arg == "-s")
            status = true;
        else if (arg == "--delete")
            remove = true;
        else if (arg != "--create-ubi-volume" && arg != "--unmount-ubi-volume")
            return Usage();
    }
    if (status)
        return PrintStatus(root);
    if (!upgrade)
        return Usage();
    return Upgrade(root, image, remove);
}
