// Parameter-store client library, simulated: a change counter shared by every process of one
// device, kept in a small file mapped into memory.
#pragma once

#include <cstdint>
#include <string>

/// Counts the committed changes of one store across processes: a cached read is still good
/// while the count is the one it was read under, which costs one memory load to tell.
class StoreGeneration {
public:
    StoreGeneration() = default;
    ~StoreGeneration();
    StoreGeneration(const StoreGeneration&) = delete;
    StoreGeneration& operator=(const StoreGeneration&) = delete;

    /// Maps the counter file, making it when absent; false (and no counter) when that fails.
    bool Open(const std::string& path);
    /// True once the counter is mapped.
    bool IsOpen() const { return counter_ != nullptr; }
    /// The count now (0 when not mapped).
    std::uint32_t Current() const;
    /// Counts one committed change, for every process of the device.
    void Advance();

private:
    std::uint32_t* counter_ = nullptr;
};
