// The simulated firmware tool: checks an image, reports progress in the status file the
// firmware page reads, and holds the tool's lock while it runs, as the device's tool does.
#include <cerrno>
#include <algorithm>
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

// The image's first eight bytes: the magic, then "FAIL" in a test image the tool must reject late.
std::string Head(const std::string& image)
{
    std::ifstream in(image, std::ios::binary);
    std::string head(8, '\0');
    in.read(&head[0], 8);
    head.resize(static_cast<std::size_t>(in.gcount()));
    return head;
}

bool FileExists(const std::string& path)
{
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0;
}

// One phase of the run: the state and how received moves from `from` to `to` of the size.
struct Phase {
    const char* state;
    double share;  // of the run time
    double from;
    double to;
};

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
    const std::string head = Head(image);
    const bool magic = head.size() >= 4 && std::memcmp(head.data(), kMagic, 4) == 0;
    // A rejected image fails halfway through the copy, as a broken signature does on the device.
    const bool rejected = !magic || head.substr(4) == "FAIL" || FileExists(root + "/etc/sim/fwtool-fail");
    const Phase run[] = {{"upgrading", 0.5, 0.0, 1.0}, {"flash", 0.35, 0.0, 1.0}, {"finishing", 0.15, 1.0, 1.0}};
    const auto tick = std::chrono::milliseconds(250);
    bool failed = size == 0;
    for (std::size_t i = 0; i < sizeof run / sizeof run[0] && !failed; ++i) {
        const Phase& phase = run[i];
        const int steps = std::max(1, static_cast<int>(duration * phase.share * 4));
        const int last = rejected && i == 0 ? steps / 2 : steps;
        for (int step = 0; step <= last; ++step) {
            const double part = phase.from + (phase.to - phase.from) * step / steps;
            WriteStatus(statusPath, Status(phase.state, static_cast<long long>(size * part), size));
            if (duration > 0)
                std::this_thread::sleep_for(tick);
        }
        failed = rejected;
    }
    WriteStatus(statusPath, failed ? Status("failed", 0, size) : Status("done", size, size));
    if (remove)
        ::unlink(image.c_str());
    lock.l_type = F_UNLCK;
    ::fcntl(lockFd, F_SETLK, &lock);
    ::close(lockFd);
    return failed ? 1 : 0;
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
