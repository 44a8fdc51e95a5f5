// panelkit util: password digests and hashes computed in-process, so that no password reaches a shell or a command line.
#include "util/Passwords.h"

#include <Poco/DigestEngine.h>

#include <crypt.h>
#include <openssl/evp.h>

#include <cerrno>
#include <memory>
#include <sys/random.h>

namespace panelkit::util {

namespace {

// The characters crypt(3) takes in a salt: 64 of them, so every random byte maps onto one evenly.
const char kSaltAlphabet[] = "./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
const std::size_t kSaltLength = 16;

bool RandomBytes(unsigned char* buffer, std::size_t length)
{
    std::size_t got = 0;
    while (got < length) {
        const ssize_t read = ::getrandom(buffer + got, length - got, 0);
        if (read < 0 && errno == EINTR)
            continue;
        if (read <= 0)
            return false;
        got += static_cast<std::size_t>(read);
    }
    return true;
}

std::string Salt()
{
    unsigned char bytes[kSaltLength];
    if (!RandomBytes(bytes, sizeof bytes))
        return "";
    std::string salt;
    for (unsigned char byte : bytes)
        salt += kSaltAlphabet[byte & 63];
    return salt;
}

}  // namespace

std::string HttpDigestHash(const std::string& user, const std::string& realm, const std::string& password)
{
    const std::string text = user + ":" + realm + ":" + password;
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_Digest(text.data(), text.size(), digest, &length, EVP_md5(), nullptr) != 1)
        return "";
    return Poco::DigestEngine::digestToHex(Poco::DigestEngine::Digest(digest, digest + length));
}

std::string CryptSha512(const std::string& password)
{
    if (password.find('\0') != std::string::npos)
        return "";
    const std::string salt = Salt();
    if (salt.empty())
        return "";
    // crypt_r's state is large (tens of KiB): on the heap, not on a worker's stack.
    auto state = std::make_unique<crypt_data>();
    const std::string setting = "$6$" + salt;
    const char* hash = ::crypt_r(password.c_str(), setting.c_str(), state.get());
    // A failing crypt answers null or a text starting with "*".
    if (!hash || hash[0] != '$')
        return "";
    return hash;
}

}  // namespace panelkit::util
