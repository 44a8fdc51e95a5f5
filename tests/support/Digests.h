// panelkit tests: digests of test data as lowercase hexadecimal, to compare with what the service computed.
#pragma once

#include <string>

namespace panelkit::test {

/// The SHA-256 of the bytes.
std::string Sha256Hex(const std::string& bytes);
/// The MD5 of the bytes.
std::string Md5Hex(const std::string& bytes);

}  // namespace panelkit::test
