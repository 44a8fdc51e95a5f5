// panelkit util: password digests and hashes computed in-process, so that no password reaches a shell or a command line.
#pragma once

#include <string>

namespace panelkit::util {

/// The HTTP digest hash of a user's password in a realm: MD5 of "user:realm:password" in lowercase hex;
/// "" when it cannot be computed.
std::string HttpDigestHash(const std::string& user, const std::string& realm, const std::string& password);
/// The password's SHA-512 crypt(3) hash ("$6$" + a fresh 16-character salt + "$" + hash); "" when it cannot be
/// made (no random source, or a password holding a NUL byte, which crypt would cut short).
std::string CryptSha512(const std::string& password);

}  // namespace panelkit::util
