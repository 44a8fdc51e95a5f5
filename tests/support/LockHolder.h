// panelkit tests: another process holding a write lock on a file, as the firmware tool holds its lock.
#pragma once

#include <string>
#include <sys/types.h>

namespace panelkit::test {

/// Locks the whole file (created when missing) from a child process until destroyed.
class LockHolder {
public:
    explicit LockHolder(const std::string& path);
    ~LockHolder();
    LockHolder(const LockHolder&) = delete;
    LockHolder& operator=(const LockHolder&) = delete;

    /// True when the child holds the lock.
    bool locked() const { return holder_ > 0; }
    /// True while the child still runs (so the lock is still held).
    bool holding() const;

private:
    pid_t holder_ = -1;
};

}  // namespace panelkit::test
