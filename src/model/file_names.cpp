#include "model/file_names.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "run/messages.h"

namespace kaldra {

std::size_t FileNameOffset(std::string_view path) {
    const std::size_t separator = path.find_last_of("/\\");
    return separator == std::string_view::npos || separator == 0 ? 0 : separator + 1;
}

int FindExtension(std::string_view name, std::int32_t& dotPosition, std::int32_t& length) {
    const std::size_t dot = name.rfind('.');
    length = static_cast<std::int32_t>(name.size());
    if (dot == std::string_view::npos) return ShowError(1074);
    dotPosition = static_cast<std::int32_t>(dot) + 1;
    return 1;
}

std::string ReplaceExtension(std::string_view path, std::string_view extension) {
    std::string result(path.substr(0, path.rfind('.')));
    result.append(extension);
    return result;
}

std::string TruePath(const std::string& path) {
    std::error_code error;
    const std::filesystem::path given = std::filesystem::absolute(path, error);
    if (error) return {};
    std::filesystem::path folder = std::filesystem::canonical(given.parent_path(), error);
    if (error) folder = given.parent_path().lexically_normal();
    return (folder / given.filename()).string();
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

bool HasSameStem(std::string_view a, std::string_view b) {
    return EqualIgnoringCase(a.substr(0, a.rfind('.')), b.substr(0, b.rfind('.')));
}

}  // namespace kaldra
