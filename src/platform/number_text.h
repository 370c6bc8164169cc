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
#include <type_traits>

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

// One conversion of a format.
struct Conversion {
    bool plus = false;
    bool zero = false;
    std::size_t width = 0;
    int precision = 6;
    char letter = 0;
};

[[nodiscard]] constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

[[nodiscard]] constexpr int ReadDecimal(std::string_view format, std::size_t& at) {
    int value = 0;
    while (at < format.size() && IsDigit(format[at])) value = value * 10 + (format[at++] - '0');
    return value;
}

// Reads the conversion whose % stands before `at`, and moves `at` behind its letter.
[[nodiscard]] constexpr Conversion ReadConversion(std::string_view format, std::size_t& at) {
    Conversion conversion;
    for (; at < format.size() && (format[at] == '+' || format[at] == '0'); ++at) {
        (format[at] == '+' ? conversion.plus : conversion.zero) = true;
    }
    conversion.width = static_cast<std::size_t>(ReadDecimal(format, at));
    if (at < format.size() && format[at] == '.') conversion.precision = ReadDecimal(format, ++at);
    conversion.letter = at < format.size() ? format[at++] : '\0';
    return conversion;
}

[[nodiscard]] std::string FormatArguments(std::string_view format, const FormatArgument* arguments, std::size_t count);

// Fills a printf format in. Known conversions: %d, %s, %E, %e (as %E) and %f, with the flag +, 0, a width and, for
// reals, a precision; and %%.
template <class... Arguments>
[[nodiscard]] std::string FormatText(std::string_view format, const Arguments&... arguments) {
    const std::array<FormatArgument, sizeof...(Arguments)> list{FormatArgument(arguments)...};
    return FormatArguments(format, list.data(), list.size());
}

// The format of the rows of a large file, taken apart when the program is compiled. Conversions: %d and %E.
struct RowFormat {
    struct Field {
        std::string_view before;  // text between this field and the one before
        Conversion conversion;
    };
    std::array<Field, 8> fields{};
    std::size_t count = 0;
    std::string_view behind;
    std::size_t longest = 0;  // characters of a row at the most

    template <std::size_t size>
    consteval RowFormat(const char (&text)[size]) {
        const std::string_view format(text, size - 1);
        longest = size;
        for (std::size_t from = 0, at = 0;; from = at) {
            at = format.find('%', from);
            if (at == std::string_view::npos) {
                behind = format.substr(from);
                break;
            }
            Field& field = fields.at(count++);
            field.before = format.substr(from, at++ - from);
            field.conversion = ReadConversion(format, at);
            longest += LongestField(field.conversion);
        }
    }

private:
    // A 64-bit integer with its sign, or a real's sign, digit, point, decimals and E+ddd.
    static consteval std::size_t LongestField(const Conversion& conversion) {
        constexpr std::size_t longestInteger = 20;
        if (conversion.letter != 'd' && conversion.letter != 'E') throw "a row knows %d and %E";
        const std::size_t real = 8 + static_cast<std::size_t>(conversion.precision);
        const std::size_t longestNumber = conversion.letter == 'd' ? longestInteger : real;
        return conversion.width > longestNumber ? conversion.width : longestNumber;
    }
};

// Put one number, padded to its width, and give the place behind it.
char* PutInteger(char* out, const Conversion& conversion, std::int64_t value);
char* PutReal(char* out, const Conversion& conversion, double value);

inline char* PutNumber(char* out, const Conversion& conversion, std::int32_t value) {
    return PutInteger(out, conversion, value);
}
inline char* PutNumber(char* out, const Conversion& conversion, float value) {
    return PutReal(out, conversion, static_cast<double>(value));
}

// Fills a row in and gives the place behind it; `format.longest` characters must fit. The text is that of FormatText.
template <class... Numbers>
[[nodiscard]] char* PutRow(char* out, const RowFormat& format, Numbers... numbers) {
    assert(sizeof...(numbers) == format.count);
    const RowFormat::Field* field = format.fields.data();
    const auto put = [&](auto number) {
        for (const char c : field->before) *out++ = c;
        assert((field->conversion.letter == 'd') == std::is_integral_v<decltype(number)>);
        out = PutNumber(out, field->conversion, number);
        ++field;
    };
    (put(numbers), ...);
    for (const char c : format.behind) *out++ = c;
    return out;
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
            for (; IsDigit(format[at]); ++at) {
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
