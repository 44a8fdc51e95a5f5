// panelkit tests: digests of test data as lowercase hexadecimal, to compare with what the service computed.
#include "Digests.h"

#include <Poco/DigestEngine.h>

#include <openssl/evp.h>

namespace panelkit::test {

namespace {

std::string DigestHex(const std::string& bytes, const EVP_MD* type)
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_Digest(bytes.data(), bytes.size(), digest, &length, type, nullptr);
    return Poco::DigestEngine::digestToHex(Poco::DigestEngine::Digest(digest, digest + length));
}

}  // namespace

std::string Sha256Hex(const std::string& bytes)
{
    return DigestHex(bytes, EVP_sha256());
}

std::string Md5Hex(const std::string& bytes)
{
    return DigestHex(bytes, EVP_md5());
}

}  // namespace panelkit::test
