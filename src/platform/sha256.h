// SHA-256 (FIPS 180-4).
#pragma once

#include <string>
#include <string_view>

namespace kaldra {

// 64 hexadecimal digits.
[[nodiscard]] std::string Sha256(std::string_view bytes);

// Of a file's content; empty where it cannot be read.
[[nodiscard]] std::string Sha256OfFile(const std::string& path);

}  // namespace kaldra
