// Numbers to text and back, by the conversions of the file formats.
//
// FormatText and ScanText take the format strings of the files as they stand. They differ from the C library's in three
// points on which the files rest: an E conversion prints three exponent digits (E+000), the C locale always holds, and
// a number that is not finite or does not fit its integer is never taken silently.
#pragma once

#include <array>
#include <cassert>
#include <cstdint>
#include <string>
#include <string_view>

namespace kaldra {

// One argument of FormatText: an integer, a real or a text.
struct FormatArgument {
    enum class Kind { Integer, Real, Text };
    Kind kind;
    std::int64_t integer = 0;
    double real = 0;
    std::string_view text;

    FormatArgument(std::int32_t value) : kind(Kind::Integer), integer(value) {}
    FormatArgument(std::int64_t value) : kind(Kind::Integer), integer(value) {}
    FormatArgument(double value) : kind(Kind::Real), real(value) {}
    FormatArgument(float value) : kind(Kind::Real), real(static_cast<double>(value)) {}
    FormatArgument(std::string_view value) : kind(Kind::Text), text(value) {}
    FormatArgument(const std::string& value) : kind(Kind::Text), text(value) {}
    FormatArgument(const char* value) : kind(Kind::Text), text(value) {}
};

[[nodiscard]] std::string FormatArguments(std::string_view format, const FormatArgument* arguments, std::size_t count);

// Fills a printf format in. Known conversions: %d, %s, %E, %e (as %E) and %f, with the flag +, 0, a width and, for
// reals, a precision; and %%.
template <class... Arguments>
[[nodiscard]] std::string FormatText(std::string_view format, const Arguments&... arguments) {
    const std::array<FormatArgument, sizeof...(Arguments)> list{FormatArgument(arguments)...};
    return FormatArguments(format, list.data(), list.size());
}

// A scanf format, taken apart where it stands in the code. Known conversions: %d, %i, %f, %e and %s, with a width below
// 256 and the suppression *. Every conversion skips leading space, so that spaces of the format say nothing.
struct ScanFormat {
    struct Field {
        char letter = 0;
        bool suppressed = false;
        std::uint8_t width = 0;  // 0: any
    };
    std::array<Field, 16> fields{};
    std::uint8_t count = 0;

    constexpr explicit ScanFormat(std::string_view format) {
        for (std::size_t at = 0; at < format.size(); ++at) {
            if (format[at] == ' ') continue;
            assert(format[at] == '%' && count < fields.size());
            Field& field = fields[count++];
            field.suppressed = format[++at] == '*';
            if (field.suppressed) ++at;
            for (; format[at] >= '0' && format[at] <= '9'; ++at) {
                field.width = static_cast<std::uint8_t>(field.width * 10 + (format[at] - '0'));
            }
            field.letter = format[at];
            assert(std::string_view("difes").find(field.letter) != std::string_view::npos);
        }
    }
    template <std::size_t size>
    consteval ScanFormat(const char (&format)[size]) : ScanFormat(std::string_view(format, size - 1)) {}
};

// Where one conversion of ScanText stores.
struct ScanTarget {
    std::int32_t* integer = nullptr;
    float* real = nullptr;
    std::string* word = nullptr;

    ScanTarget(std::int32_t* target) : integer(target) {}
    ScanTarget(float* target) : real(target) {}
    ScanTarget(std::string* target) : word(target) {}
};

struct ScanResult {
    int fields = 0;           // conversions stored, in order, up to the first that failed
    bool outOfRange = false;  // the one that failed was a number that is not finite or does not fit 32 bits
};

[[nodiscard]] ScanResult ScanArguments(std::string_view text, const ScanFormat& format, const ScanTarget* targets);

// Scans a text.
template <class... Targets>
[[nodiscard]] ScanResult ScanText(std::string_view text, const ScanFormat& format, Targets*... targets) {
    const std::array<ScanTarget, sizeof...(Targets)> list{ScanTarget(targets)...};
    return ScanArguments(text, format, list.data());
}

}  // namespace kaldra
