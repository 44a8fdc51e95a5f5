// panelkit util: the one way to the parameter store: a shared client, one lock, uniform failure logging.
#pragma once

#include <pardb/cPardbLib.h>

#include <string>
#include <vector>

namespace panelkit::util {

/// Static operations on the device's parameter store. Failures return neutral values
/// (0, "", false, an empty list) and are logged: reads at debug level, writes at error level.
class Pardb {
public:
    /// A value as the store keeps it: its text and its type (an int's or a float's text is its decimal form).
    struct Entry {
        std::string key;
        std::string value;
        PARDB_PAR_T type;
    };

    /// The shared client of this process, created on first use.
    static cPardbLib& lib();
    /// The int at the key, 0 when it cannot be read.
    static int GetInt(const std::string& key);
    /// The float at the key, 0 when it cannot be read.
    static float GetFloat(const std::string& key);
    /// The text at the key, "" when it cannot be read.
    static std::string GetString(const std::string& key);
    /// Stores an int; false on failure.
    static bool Set(const std::string& key, int value);
    /// Stores a float; false on failure.
    static bool Set(const std::string& key, float value);
    /// Stores a string; false on failure.
    static bool Set(const std::string& key, const std::string& value);
    /// Deletes the key; false on failure.
    static bool Delete(const std::string& key);
    /// Stores a file with the key; false on failure.
    static bool AddFile(const std::string& key, const std::string& path, unsigned mode);
    /// Reads the value and its type; false when the key cannot be read.
    static bool Get(const std::string& key, std::string& value, PARDB_PAR_T& type);
    /// True when the key can be read (also with an empty value).
    static bool Exists(const std::string& key);
    /// The full names of the keys below the prefix, byte-wise sorted.
    static std::vector<std::string> GetList(const std::string& prefix);
    /// Writes each entry whose key is missing or holds another value or type, in order and all under one hold
    /// of the lock, stopping at the first failed write; false then. Numbers compare by value, and a string
    /// (any type but int and float) by its text. `written` counts the keys written.
    static bool Update(const std::vector<Entry>& entries, std::size_t& written);
    /// Forgets the client's cached reads, to see other processes' writes.
    static void FlushReadCache();
    /// Reads into a caller's buffer without taking the lock; the library's result.
    static int GetPar(const char* key, char* buffer);

    Pardb() = delete;
};

}  // namespace panelkit::util
