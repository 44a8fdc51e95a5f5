// Parameter-store client library, simulated: a change counter shared by every process of one
// device, kept in a small file mapped into memory.
#include "StoreGeneration.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

StoreGeneration::~StoreGeneration()
{
    if (counter_)
        ::munmap(counter_, sizeof *counter_);
}

bool StoreGeneration::Open(const std::string& path)
{
    if (counter_)
        return true;
    const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (fd < 0)
        return false;
    struct stat info {};
    // Growing a fresh file reads as zeros; a file already large enough is left as it is, so
    // that two processes making it at once cannot reset each other's count.
    const bool sized = ::fstat(fd, &info) == 0 &&
                       (info.st_size >= static_cast<off_t>(sizeof *counter_) || ::ftruncate(fd, sizeof *counter_) == 0);
    void* mapped = sized ? ::mmap(nullptr, sizeof *counter_, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0) : MAP_FAILED;
    ::close(fd);
    if (mapped == MAP_FAILED)
        return false;
    counter_ = static_cast<std::uint32_t*>(mapped);
    return true;
}

std::uint32_t StoreGeneration::Current() const
{
    return counter_ ? __atomic_load_n(counter_, __ATOMIC_ACQUIRE) : 0;
}

void StoreGeneration::Advance()
{
    if (counter_)
        __atomic_add_fetch(counter_, 1, __ATOMIC_RELEASE);
}
