// pardb: reads and writes the simulated device's parameter store from the command line.
#include "pardb/cPardbLib.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

const char kUsage[] =
    "usage: pardb [--root DIR] get KEY\n"
    "       pardb [--root DIR] set KEY VALUE [--int|--float]\n"
    "       pardb [--root DIR] del KEY\n"
    "       pardb [--root DIR] list [PREFIX]\n"
    "       pardb [--root DIR] refuse KEY   (every later write or delete of KEY fails, for tests)\n"
    "       pardb [--root DIR] import FILE   (lines: KEY s|i|f VALUE; # starts a comment)\n"
    "The device root is DIR, else $PANELKIT_DEVICE_ROOT.\n";

int Usage()
{
    std::fputs(kUsage, stderr);
    return 1;
}

int Fail(const cPardbLib& store, const std::string& what)
{
    std::fprintf(stderr, "pardb: %s: %s\n", what.c_str(),
                 store.lastError().empty() ? "failed" : store.lastError().c_str());
    return 1;
}

bool SelectRoot(const std::string& root)
{
    std::string absolute = root;
    char cwd[PATH_MAX];
    if (!root.empty() && root[0] != '/' && ::getcwd(cwd, sizeof cwd))
        absolute = std::string(cwd) + "/" + root;
    return ::setenv("PANELKIT_DEVICE_ROOT", absolute.c_str(), 1) == 0;
}

int Set(cPardbLib& store, const std::vector<std::string>& args)
{
    if (args.size() < 3 || args.size() > 4)
        return Usage();
    const std::string type = args.size() == 4 ? args[3] : "";
    const char* key = args[1].c_str();
    const std::string& value = args[2];
    char* end = nullptr;
    int rc;
    if (type == "--int") {
        const long number = std::strtol(value.c_str(), &end, 10);
        if (value.empty() || *end != '\0' || number < INT_MIN || number > INT_MAX) {
            std::fprintf(stderr, "pardb: not a whole number: %s\n", value.c_str());
            return 1;
        }
        rc = store.setPar(key, static_cast<int>(number));
    } else if (type == "--float") {
        const float number = std::strtof(value.c_str(), &end);
        if (value.empty() || *end != '\0') {
            std::fprintf(stderr, "pardb: not a number: %s\n", value.c_str());
            return 1;
        }
        rc = store.setPar(key, number);
    } else if (type.empty()) {
        rc = store.setPar(key, value);
    } else {
        return Usage();
    }
    return rc == 0 ? 0 : Fail(store, "set " + args[1]);
}

// Stores every "KEY TYPE VALUE" line of a file; the value is the rest of the line and may be empty.
int Import(cPardbLib& store, const std::string& file)
{
    std::ifstream in(file);
    if (!in) {
        std::fprintf(stderr, "pardb: cannot read %s\n", file.c_str());
        return 1;
    }
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        if (line.empty() || line[0] == '#')
            continue;
        const auto first = line.find(' ');
        const auto second = first == std::string::npos ? std::string::npos : line.find(' ', first + 1);
        const std::string type = first == std::string::npos ? "" : line.substr(first + 1, second - first - 1);
        const std::string key = line.substr(0, first);
        const std::string value = second == std::string::npos ? "" : line.substr(second + 1);
        std::vector<std::string> args{"set", key, value};
        if (type == "i")
            args.push_back("--int");
        else if (type == "f")
            args.push_back("--float");
        else if (type != "s") {
            std::fprintf(stderr, "pardb: %s:%d: the type must be s, i or f\n", file.c_str(), number);
            return 1;
        }
        if (Set(store, args) != 0)
            return 1;
    }
    return 0;
}

int Run(cPardbLib& store, const std::vector<std::string>& args)
{
    const std::string& command = args[0];
    if (command == "get" && args.size() == 2) {
        std::string value;
        if (store.getPar(args[1].c_str(), value) != 0)
            return Fail(store, "get " + args[1]);
        std::printf("%s\n", value.c_str());
        return 0;
    }
    if (command == "set")
        return Set(store, args);
    if (command == "import" && args.size() == 2)
        return Import(store, args[1]);
    if (command == "del" && args.size() == 2)
        return store.delPar(args[1].c_str()) == 0 ? 0 : Fail(store, "del " + args[1]);
    if (command == "refuse" && args.size() == 2)
        return store.refusePar(args[1].c_str()) == 0 ? 0 : Fail(store, "refuse " + args[1]);
    if (command == "list" && args.size() <= 2) {
        if (store.getList(args.size() == 2 ? args[1].c_str() : "", 0) != 0)
            return Fail(store, "list");
        char name[PARDB_MAX_NAME] = {};
        while (store.getNext(name, 0) == 0)
            std::printf("%s\n", name);
        return 0;
    }
    return Usage();
}

}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> args;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--root") == 0) {
            if (i + 1 >= argc || !SelectRoot(argv[++i]))
                return Usage();
            continue;
        }
        args.emplace_back(argv[i]);
    }
    if (args.empty())
        return Usage();
    cPardbLib store(PARDB_CLIENT_ID_DEFAULT);
    return Run(store, args);
}
