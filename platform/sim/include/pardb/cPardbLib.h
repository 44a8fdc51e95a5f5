// Parameter-store client library, simulated: the device's key/value store kept in an SQLite
// database under the device root, shared safely by every process of that device.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;
class StoreGeneration;

/// Who opens the store (the web application is 3).
enum PARDB_CLIENT_ID_T { PARDB_CLIENT_ID_DEFAULT = 0, PARDB_CLIENT_ID_WEB = 3 };

/// The type of a stored value: 0 int, 1 float, 2 string; 3 is what callers preset before a look-up.
enum PARDB_PAR_T { PARDB_PAR_INT = 0, PARDB_PAR_FLOAT = 1, PARDB_PAR_STRING = 2, PARDB_PAR_UNKNOWN = 3 };

/// Longest value copied by getPar(key, char*), terminator included.
constexpr std::size_t PARDB_MAX_VALUE = 256;
/// Size of the name buffer getNext fills, terminator included.
constexpr std::size_t PARDB_MAX_NAME = 128;

/// One connection to the device's store. Every call returns 0 on success. Keys are
/// slash-separated paths; leading slashes are dropped ("/net/a" and "net/a" are one key).
/// The store lives at $PANELKIT_DEVICE_ROOT/var/lib/pardb/store.db; it is created on first
/// use when its folder exists (an initialised device) and never otherwise. When the variable
/// names another root, the next call opens that root's store.
/// Every call may come from any thread.
class cPardbLib {
public:
    /// Opens the store of the current device root for the client.
    explicit cPardbLib(PARDB_CLIENT_ID_T client);
    ~cPardbLib();
    cPardbLib(const cPardbLib&) = delete;
    cPardbLib& operator=(const cPardbLib&) = delete;

    /// Reads an int; a string value converts when it is a whole number.
    int getPar(const char* key, int* value);
    /// Reads a float; a string value converts when it is a number.
    int getPar(const char* key, float* value);
    /// Reads a value as text into a buffer of PARDB_MAX_VALUE bytes (longer values are cut).
    int getPar(const char* key, char* value);
    /// Reads a value as text.
    int getPar(const char* key, std::string& value);
    /// Reads a value as text with its type.
    int getPar(const char* key, std::string& value, PARDB_PAR_T* type);
    /// Stores an int.
    int setPar(const char* key, int value);
    /// Stores a float.
    int setPar(const char* key, float value);
    /// Stores a string.
    int setPar(const char* key, const char* value);
    /// Stores a string.
    int setPar(const char* key, const std::string& value);
    /// Deletes the key and every key below it; fails when nothing was there.
    int delPar(const char* key);
    /// Stores a file's content and permission with the key (the value is the file's path).
    int addFile(const char* key, const char* path, unsigned mode);
    /// Starts listing the full names of every key below the prefix ("" lists all), byte-wise sorted.
    int getList(const char* prefix, int flags);
    /// Copies the next listed name into a PARDB_MAX_NAME buffer; non-zero at the end.
    int getNext(char* name, int flags);
    /// Simulator only, for tests of failing writes: from now on every setPar, addFile and delPar
    /// of the key (and every delPar that would remove it) fails, in every process of the device.
    int refusePar(const char* key);
    /// Forgets cached reads. Reads are kept until any process of the device writes the store,
    /// so values written elsewhere are seen on the next read even without this.
    void FlushReadCache();

    /// The client this instance was opened for.
    PARDB_CLIENT_ID_T client() const { return client_; }
    /// The path of the database file this instance uses.
    const std::string& path() const { return path_; }
    /// The last error of this instance, "" when the last call succeeded.
    const std::string& lastError() const { return error_; }

private:
    /// What one read gave: the value and type, or that the key is not there.
    struct CachedRead {
        bool found = false;
        PARDB_PAR_T type = PARDB_PAR_UNKNOWN;
        std::string value;
    };

    using Guard = std::lock_guard<std::mutex>;

    /// Opens the store of the current device root, first closing one of another root.
    bool open();
    /// Closes the store and forgets what was read from it.
    void close();
    /// The compiled form of one of this class's statements, made once per connection.
    sqlite3_stmt* compiled(const char* sql);
    int fail(const std::string& message);
    int read(const std::string& key, std::string& value, PARDB_PAR_T& type);
    int write(const std::string& key, PARDB_PAR_T type, const std::string& value);
    /// True when the key, or with orBelow also a key below it, is refused.
    bool refuses(const std::string& key, bool orBelow);
    /// The cached outcome of reading the key, or null; forgets everything once the store changed.
    const CachedRead* cached(const std::string& key);
    void remember(const std::string& key, CachedRead read);
    /// Tells every process of the device that the store changed.
    void changed();

    // Calls may come from several threads at once (a caller may skip its own lock); each public
    // call takes it once and works through the private helpers.
    std::mutex lock_;
    PARDB_CLIENT_ID_T client_;
    std::string path_;
    std::string error_;
    sqlite3* db_ = nullptr;
    std::map<const char*, sqlite3_stmt*> compiled_;
    bool reported_ = false;
    std::unique_ptr<StoreGeneration> generation_;
    std::unordered_map<std::string, CachedRead> reads_;
    std::uint32_t readsGeneration_ = 0;
    std::vector<std::string> listing_;
    std::size_t next_ = 0;
};
