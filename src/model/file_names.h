// Taking file names apart. Both / and \ separate folders.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kaldra {

// Where the name without its folder begins; 0 where there is no folder.
[[nodiscard]] std::size_t FileNameOffset(std::string_view path);

// Sets `dotPosition` to the 1-based position of the last dot of `name` and `length` to its length. Gives 1, or 0 after
// message 1074 for a name without a dot.
[[nodiscard]] int FindExtension(std::string_view name, std::int32_t& dotPosition, std::int32_t& length);

// `path` with everything from its last dot on replaced by `extension` (which brings its own dot).
[[nodiscard]] std::string ReplaceExtension(std::string_view path, std::string_view extension);

// The absolute path with its folder in the one true spelling, as names are compared as texts; a linked file keeps the
// name of the link. Empty where the working folder cannot be found.
[[nodiscard]] std::string TruePath(const std::string& path);

// Equal apart from the case of the letters A to Z.
[[nodiscard]] bool EqualIgnoringCase(std::string_view a, std::string_view b);

// True when two paths have the same text before their last dots, ignoring case.
[[nodiscard]] bool HasSameStem(std::string_view a, std::string_view b);

}  // namespace kaldra
