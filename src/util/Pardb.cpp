// panelkit util: the one way to the parameter store: a shared client, one lock, uniform failure logging.
#include "util/Pardb.h"

#include "web/Log.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>

namespace panelkit::util {

namespace {

std::mutex g_lock;

}  // namespace

cPardbLib& Pardb::lib()
{
    // A function-local static: two threads asking first still create one client.
    static cPardbLib instance(static_cast<PARDB_CLIENT_ID_T>(3));
    return instance;
}

namespace {

// One library getter per value type, so that the reads below are written once.
int Fetch(cPardbLib& lib, const std::string& key, int& value)
{
    return lib.getPar(key.c_str(), &value);
}

int Fetch(cPardbLib& lib, const std::string& key, float& value)
{
    return lib.getPar(key.c_str(), &value);
}

int Fetch(cPardbLib& lib, const std::string& key, std::string& value)
{
    return lib.getPar(key.c_str(), value);
}

template <class T>
T Read(const std::string& key)
{
    std::lock_guard<std::mutex> guard(g_lock);
    T value{};
    if (Fetch(Pardb::lib(), key, value) != 0)
        PK_DEBUG() << "FAIL pardblib::getPar \"" << key << "\"";
    return value;
}

template <class T>
bool Write(const std::string& key, const T& value)
{
    std::lock_guard<std::mutex> guard(g_lock);
    if (Pardb::lib().setPar(key.c_str(), value) == 0)
        return true;
    PK_ERROR() << "FAIL pardblib::setPar \"" << key << "\"";
    return false;
}

// The store's type numbers of the two number types; every other type holds a string.
const int kInt = 0;
const int kFloat = 1;

int Kind(PARDB_PAR_T type)
{
    const int number = static_cast<int>(type);
    return number == kInt || number == kFloat ? number : -1;
}

// True when the stored value already is the entry's; the caller holds the lock.
bool Holds(cPardbLib& lib, const Pardb::Entry& entry)
{
    std::string stored;
    auto type = static_cast<PARDB_PAR_T>(3);
    if (lib.getPar(entry.key.c_str(), stored, &type) != 0 || Kind(type) != Kind(entry.type))
        return false;
    switch (Kind(entry.type)) {
    case kInt:
        return std::strtol(stored.c_str(), nullptr, 10) == std::strtol(entry.value.c_str(), nullptr, 10);
    case kFloat:
        return std::strtof(stored.c_str(), nullptr) == std::strtof(entry.value.c_str(), nullptr);
    default:
        return stored == entry.value;
    }
}

// Writes the entry as its type; the caller holds the lock.
int Store(cPardbLib& lib, const Pardb::Entry& entry)
{
    switch (Kind(entry.type)) {
    case kInt:
        return lib.setPar(entry.key.c_str(), static_cast<int>(std::strtol(entry.value.c_str(), nullptr, 10)));
    case kFloat:
        return lib.setPar(entry.key.c_str(), std::strtof(entry.value.c_str(), nullptr));
    default:
        return lib.setPar(entry.key.c_str(), entry.value);
    }
}

}  // namespace

int Pardb::GetInt(const std::string& key)
{
    return Read<int>(key);
}

float Pardb::GetFloat(const std::string& key)
{
    return Read<float>(key);
}

std::string Pardb::GetString(const std::string& key)
{
    return Read<std::string>(key);
}

bool Pardb::Set(const std::string& key, int value)
{
    return Write(key, value);
}

bool Pardb::Set(const std::string& key, float value)
{
    return Write(key, value);
}

bool Pardb::Set(const std::string& key, const std::string& value)
{
    return Write(key, value);
}

bool Pardb::Delete(const std::string& key)
{
    std::lock_guard<std::mutex> guard(g_lock);
    if (lib().delPar(key.c_str()) == 0)
        return true;
    PK_ERROR() << "FAIL pardblib::delPar \"" << key << "\"";
    return false;
}

bool Pardb::AddFile(const std::string& key, const std::string& path, unsigned mode)
{
    std::lock_guard<std::mutex> guard(g_lock);
    if (lib().addFile(key.c_str(), path.c_str(), mode) == 0)
        return true;
    PK_ERROR() << "FAIL pardblib::addFile \"" << key << "\"";
    return false;
}

bool Pardb::Get(const std::string& key, std::string& value, PARDB_PAR_T& type)
{
    std::lock_guard<std::mutex> guard(g_lock);
    return lib().getPar(key.c_str(), value, &type) == 0;
}

bool Pardb::Exists(const std::string& key)
{
    std::lock_guard<std::mutex> guard(g_lock);
    std::string scratch;
    auto type = static_cast<PARDB_PAR_T>(3);
    return lib().getPar(key.c_str(), scratch, &type) == 0;
}

std::vector<std::string> Pardb::GetList(const std::string& prefix)
{
    std::lock_guard<std::mutex> guard(g_lock);
    std::vector<std::string> names;
    lib().getList(prefix.c_str(), 0);  // a failed start just yields no entries
    char name[128] = {};
    while (lib().getNext(name, 0) == 0)
        names.emplace_back(name);
    std::sort(names.begin(), names.end());
    return names;
}

bool Pardb::Update(const std::vector<Entry>& entries, std::size_t& written)
{
    std::lock_guard<std::mutex> guard(g_lock);
    written = 0;
    for (const auto& entry : entries) {
        if (Holds(lib(), entry))
            continue;
        if (Store(lib(), entry) != 0) {
            PK_ERROR() << "FAIL pardblib::setPar \"" << entry.key << "\"";
            return false;
        }
        ++written;
    }
    return true;
}

void Pardb::FlushReadCache()
{
    std::lock_guard<std::mutex> guard(g_lock);
    lib().FlushReadCache();
}

int Pardb::GetPar(const char* key, char* buffer)
{
    return lib().getPar(key, buffer);
}

}  // namespace panelkit::util
