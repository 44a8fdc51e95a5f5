// Parameter-store client library, simulated: the device's key/value store kept in an SQLite
// database under the device root, shared safely by every process of that device.
#include "pardb/cPardbLib.h"

#include "StoreGeneration.h"

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

namespace {

constexpr int kFailure = -1;
// Pages read a few dozen keys; past this many the cache starts again rather than grow.
constexpr std::size_t kMostCachedReads = 4096;

std::string Normalise(const char* key)
{
    std::string name = key ? key : "";
    const auto first = name.find_first_not_of('/');
    return first == std::string::npos ? std::string() : name.substr(first);
}

std::string StorePath()
{
    const char* root = std::getenv("PANELKIT_DEVICE_ROOT");
    return std::string(root ? root : "") + "/var/lib/pardb/store.db";
}

bool FolderExists(const std::string& file)
{
    const auto slash = file.rfind('/');
    struct stat info {};
    return slash != std::string::npos && ::stat(file.substr(0, slash).c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// A compiled statement in use: reset and unbound on every path, so that the next use starts clean.
class Statement {
public:
    explicit Statement(sqlite3_stmt* statement) : statement_(statement) {}
    ~Statement()
    {
        sqlite3_reset(statement_);
        sqlite3_clear_bindings(statement_);
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    explicit operator bool() const { return statement_ != nullptr; }
    sqlite3_stmt* get() { return statement_; }
    void bind(int index, const std::string& text)
    {
        sqlite3_bind_text(statement_, index, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
    }
    std::string text(int column)
    {
        const auto* data = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
        return data ? std::string(data, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)))
                    : std::string();
    }

private:
    sqlite3_stmt* statement_ = nullptr;
};

}  // namespace

cPardbLib::cPardbLib(PARDB_CLIENT_ID_T client)
    : client_(client), path_(StorePath()), generation_(std::make_unique<StoreGeneration>())
{
}

cPardbLib::~cPardbLib()
{
    close();
}

void cPardbLib::close()
{
    for (const auto& entry : compiled_)
        sqlite3_finalize(entry.second);
    compiled_.clear();
    sqlite3_close_v2(db_);
    db_ = nullptr;
    generation_ = std::make_unique<StoreGeneration>();
    reads_.clear();
    readsGeneration_ = 0;
    listing_.clear();
    next_ = 0;
}

sqlite3_stmt* cPardbLib::compiled(const char* sql)
{
    // Keyed by the address of the statement's text: every statement here is a literal.
    auto found = compiled_.find(sql);
    if (found != compiled_.end())
        return found->second;
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v3(db_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK)
        return nullptr;
    compiled_.emplace(sql, statement);
    return statement;
}

int cPardbLib::fail(const std::string& message)
{
    error_ = message;
    return kFailure;
}

bool cPardbLib::open()
{
    // A process of the simulator may move to another device root (one test after another); the
    // store and everything read from it belong to the root they came from.
    const std::string path = StorePath();
    if (path != path_) {
        close();
        path_ = path;
        reported_ = false;
    }
    if (db_)
        return true;
    if (!FolderExists(path_)) {
        error_ = "no parameter store at " + path_ + " (the device root is not initialised)";
        if (!reported_)
            std::fprintf(stderr, "pardb: %s\n", error_.c_str());
        reported_ = true;
        return false;
    }
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX;
    char* message = nullptr;
    if (sqlite3_open_v2(path_.c_str(), &db_, flags, nullptr) != SQLITE_OK ||
        sqlite3_busy_timeout(db_, 5000) != SQLITE_OK ||
        sqlite3_exec(db_,
                     "PRAGMA journal_mode=WAL;"
                     "CREATE TABLE IF NOT EXISTS params (key TEXT PRIMARY KEY, type INTEGER NOT NULL,"
                     " value TEXT NOT NULL, content BLOB, mode INTEGER);"
                     "CREATE TABLE IF NOT EXISTS refused (key TEXT PRIMARY KEY)",
                     nullptr, nullptr, &message) != SQLITE_OK) {
        error_ = "cannot open the parameter store " + path_ + ": " + (message ? message : sqlite3_errmsg(db_));
        sqlite3_free(message);
        if (!reported_)
            std::fprintf(stderr, "pardb: %s\n", error_.c_str());
        reported_ = true;
        sqlite3_close_v2(db_);
        db_ = nullptr;
        return false;
    }
    // Without the counter every read goes to the database, which is always right, only slower.
    generation_->Open(path_ + "-generation");
    return true;
}

const cPardbLib::CachedRead* cPardbLib::cached(const std::string& key)
{
    if (!generation_->IsOpen())
        return nullptr;
    // Loaded before the database is asked, so a change committed meanwhile is never cached
    // under the count it missed.
    const std::uint32_t now = generation_->Current();
    if (now != readsGeneration_) {
        reads_.clear();
        readsGeneration_ = now;
    }
    const auto found = reads_.find(key);
    return found == reads_.end() ? nullptr : &found->second;
}

void cPardbLib::remember(const std::string& key, CachedRead read)
{
    if (!generation_->IsOpen())
        return;
    if (reads_.size() >= kMostCachedReads)
        reads_.clear();
    reads_.emplace(key, std::move(read));
}

void cPardbLib::changed()
{
    generation_->Advance();
}

int cPardbLib::read(const std::string& key, std::string& value, PARDB_PAR_T& type)
{
    if (!open())
        return kFailure;
    if (const CachedRead* hit = cached(key)) {
        if (!hit->found)
            return fail("no parameter " + key);
        type = hit->type;
        value = hit->value;
        error_.clear();
        return 0;
    }
    Statement select(compiled("SELECT type, value FROM params WHERE key = ?1"));
    if (!select)
        return fail(sqlite3_errmsg(db_));
    select.bind(1, key);
    const int step = sqlite3_step(select.get());
    if (step == SQLITE_DONE) {
        remember(key, {false, PARDB_PAR_UNKNOWN, ""});
        return fail("no parameter " + key);
    }
    if (step != SQLITE_ROW)
        return fail(sqlite3_errmsg(db_));
    type = static_cast<PARDB_PAR_T>(sqlite3_column_int(select.get(), 0));
    value = select.text(1);
    remember(key, {true, type, value});
    error_.clear();
    return 0;
}

bool cPardbLib::refuses(const std::string& key, bool orBelow)
{
    Statement select(compiled(orBelow ? "SELECT 1 FROM refused WHERE key = ?1 OR (key > ?1 || '/' AND key < ?1 || '0')"
                                      : "SELECT 1 FROM refused WHERE key = ?1"));
    if (!select)
        return false;
    select.bind(1, key);
    return sqlite3_step(select.get()) == SQLITE_ROW;
}

int cPardbLib::write(const std::string& key, PARDB_PAR_T type, const std::string& value)
{
    if (key.empty())
        return fail("an empty key cannot be stored");
    if (!open())
        return kFailure;
    if (refuses(key, false))
        return fail("the store refuses to write " + key);
    Statement upsert(compiled("INSERT INTO params (key, type, value) VALUES (?1, ?2, ?3) "
                          "ON CONFLICT(key) DO UPDATE SET type = excluded.type, value = excluded.value,"
                          " content = NULL, mode = NULL"));
    if (!upsert)
        return fail(sqlite3_errmsg(db_));
    upsert.bind(1, key);
    sqlite3_bind_int(upsert.get(), 2, type);
    upsert.bind(3, value);
    if (sqlite3_step(upsert.get()) != SQLITE_DONE)
        return fail(sqlite3_errmsg(db_));
    changed();
    error_.clear();
    return 0;
}

int cPardbLib::getPar(const char* key, int* value)
{
    const Guard guard(lock_);
    std::string text;
    PARDB_PAR_T type = PARDB_PAR_UNKNOWN;
    if (read(Normalise(key), text, type) != 0)
        return kFailure;
    errno = 0;
    char* end = nullptr;
    const long number = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno == ERANGE || number < INT32_MIN || number > INT32_MAX)
        return fail("parameter " + Normalise(key) + " is not a whole number: " + text);
    *value = static_cast<int>(number);
    return 0;
}

int cPardbLib::getPar(const char* key, float* value)
{
    const Guard guard(lock_);
    std::string text;
    PARDB_PAR_T type = PARDB_PAR_UNKNOWN;
    if (read(Normalise(key), text, type) != 0)
        return kFailure;
    char* end = nullptr;
    const float number = std::strtof(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(number))
        return fail("parameter " + Normalise(key) + " is not a number: " + text);
    *value = number;
    return 0;
}

int cPardbLib::getPar(const char* key, char* value)
{
    const Guard guard(lock_);
    std::string text;
    PARDB_PAR_T type = PARDB_PAR_UNKNOWN;
    if (read(Normalise(key), text, type) != 0)
        return kFailure;
    const std::size_t length = std::min(text.size(), PARDB_MAX_VALUE - 1);
    std::memcpy(value, text.data(), length);
    value[length] = '\0';
    return 0;
}

int cPardbLib::getPar(const char* key, std::string& value)
{
    const Guard guard(lock_);
    PARDB_PAR_T type = PARDB_PAR_UNKNOWN;
    return read(Normalise(key), value, type);
}

int cPardbLib::getPar(const char* key, std::string& value, PARDB_PAR_T* type)
{
    const Guard guard(lock_);
    std::string text;
    PARDB_PAR_T found = PARDB_PAR_UNKNOWN;
    if (read(Normalise(key), text, found) != 0)
        return kFailure;
    value = text;
    if (type)
        *type = found;
    return 0;
}

int cPardbLib::setPar(const char* key, int value)
{
    const Guard guard(lock_);
    return write(Normalise(key), PARDB_PAR_INT, std::to_string(value));
}

int cPardbLib::setPar(const char* key, float value)
{
    const Guard guard(lock_);
    std::ostringstream text;
    text << value;
    return write(Normalise(key), PARDB_PAR_FLOAT, text.str());
}

int cPardbLib::setPar(const char* key, const char* value)
{
    const Guard guard(lock_);
    return write(Normalise(key), PARDB_PAR_STRING, value ? value : "");
}

int cPardbLib::setPar(const char* key, const std::string& value)
{
    const Guard guard(lock_);
    return write(Normalise(key), PARDB_PAR_STRING, value);
}

int cPardbLib::delPar(const char* key)
{
    const Guard guard(lock_);
    const std::string name = Normalise(key);
    if (name.empty())
        return fail("an empty key cannot be deleted");
    if (!open())
        return kFailure;
    if (refuses(name, true))
        return fail("the store refuses to delete " + name);
    // Keys below "a/b" lie between "a/b/" and "a/b0" in byte order ('0' follows '/').
    Statement remove(compiled("DELETE FROM params WHERE key = ?1 OR (key > ?1 || '/' AND key < ?1 || '0')"));
    if (!remove)
        return fail(sqlite3_errmsg(db_));
    remove.bind(1, name);
    if (sqlite3_step(remove.get()) != SQLITE_DONE)
        return fail(sqlite3_errmsg(db_));
    if (sqlite3_changes(db_) == 0)
        return fail("no parameter " + name);
    changed();
    error_.clear();
    return 0;
}

int cPardbLib::refusePar(const char* key)
{
    const Guard guard(lock_);
    const std::string name = Normalise(key);
    if (name.empty())
        return fail("an empty key cannot be refused");
    if (!open())
        return kFailure;
    Statement insert(compiled("INSERT OR IGNORE INTO refused (key) VALUES (?1)"));
    if (!insert)
        return fail(sqlite3_errmsg(db_));
    insert.bind(1, name);
    if (sqlite3_step(insert.get()) != SQLITE_DONE)
        return fail(sqlite3_errmsg(db_));
    error_.clear();
    return 0;
}

int cPardbLib::addFile(const char* key, const char* path, unsigned mode)
{
    const Guard guard(lock_);
    std::ifstream file(path ? path : "", std::ios::binary);
    if (!file)
        return fail(std::string("cannot read ") + (path ? path : ""));
    std::stringstream content;
    content << file.rdbuf();
    const std::string bytes = content.str();
    if (write(Normalise(key), PARDB_PAR_STRING, path) != 0)
        return kFailure;
    Statement attach(compiled("UPDATE params SET content = ?2, mode = ?3 WHERE key = ?1"));
    if (!attach)
        return fail(sqlite3_errmsg(db_));
    attach.bind(1, Normalise(key));
    sqlite3_bind_blob(attach.get(), 2, bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
    sqlite3_bind_int64(attach.get(), 3, mode);
    if (sqlite3_step(attach.get()) != SQLITE_DONE)
        return fail(sqlite3_errmsg(db_));
    return 0;
}

int cPardbLib::getList(const char* prefix, int)
{
    const Guard guard(lock_);
    listing_.clear();
    next_ = 0;
    std::string name = Normalise(prefix);
    while (!name.empty() && name.back() == '/')
        name.pop_back();
    if (!open())
        return kFailure;
    Statement select(compiled(name.empty() ? "SELECT key FROM params ORDER BY key"
                                       : "SELECT key FROM params WHERE key > ?1 || '/' AND key < ?1 || '0'"
                                         " ORDER BY key"));
    if (!select)
        return fail(sqlite3_errmsg(db_));
    if (!name.empty())
        select.bind(1, name);
    int step;
    while ((step = sqlite3_step(select.get())) == SQLITE_ROW)
        listing_.push_back(select.text(0));
    if (step != SQLITE_DONE)
        return fail(sqlite3_errmsg(db_));
    return 0;
}

int cPardbLib::getNext(char* name, int)
{
    const Guard guard(lock_);
    if (next_ >= listing_.size())
        return kFailure;
    const std::string& entry = listing_[next_++];
    const std::size_t length = std::min(entry.size(), PARDB_MAX_NAME - 1);
    std::memcpy(name, entry.data(), length);
    name[length] = '\0';
    return 0;
}

void cPardbLib::FlushReadCache()
{
    const Guard guard(lock_);
    reads_.clear();
}
