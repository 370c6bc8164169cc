#include "platform/number_text.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <cmath>
#include <system_error>

namespace kaldra {

// ---------------------------------------------------------------------------------------------------------------------
// Formatting

namespace {

struct Conversion {
    bool plus = false;
    bool zero = false;
    std::size_t width = 0;
    int precision = 6;
    char letter = 0;
};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

int ReadDecimal(std::string_view format, std::size_t& at) {
    int value = 0;
    while (at < format.size() && IsDigit(format[at])) value = value * 10 + (format[at++] - '0');
    return value;
}

// Reads the conversion whose % stands before `at`, and moves `at` behind its letter.
Conversion ReadConversion(std::string_view format, std::size_t& at) {
    Conversion conversion;
    for (; at < format.size() && (format[at] == '+' || format[at] == '0'); ++at) {
        (format[at] == '+' ? conversion.plus : conversion.zero) = true;
    }
    conversion.width = static_cast<std::size_t>(ReadDecimal(format, at));
    if (at < format.size() && format[at] == '.') conversion.precision = ReadDecimal(format, ++at);
    conversion.letter = at < format.size() ? format[at++] : '\0';
    return conversion;
}

// Largest field: sign, 39 integer digits of the largest f32 and the decimals of an f format, or a 19-digit integer.
constexpr std::size_t longestNumber = 400;

std::string_view IntegerText(std::array<char, longestNumber>& field, std::int64_t value, bool plus) {
    char* first = field.data();
    if (plus && value >= 0) *first++ = '+';
    const auto end = std::to_chars(first, field.data() + field.size(), value);
    return {field.data(), end.ptr};
}

// d.dddE+ddd: the exponent's two digits of the library become three.
std::string_view RealText(std::array<char, longestNumber>& field, double value, const Conversion& conversion) {
    char* first = field.data();
    if (conversion.plus && !std::signbit(value)) *first++ = '+';
    const bool fixed = conversion.letter == 'f';
    const auto style = fixed ? std::chars_format::fixed : std::chars_format::scientific;
    auto end = std::to_chars(first, field.data() + field.size(), value, style, conversion.precision).ptr;
    if (fixed) return {field.data(), end};
    const std::string_view text(field.data(), end);
    const std::size_t e = text.find('e');
    if (e == std::string_view::npos) return text;  // inf or nan
    field[e] = 'E';
    char* digits = field.data() + e + 2;
    if (end - digits == 2) {
        digits[2] = digits[1];
        digits[1] = digits[0];
        digits[0] = '0';
        ++end;
    }
    return {field.data(), end};
}

void AppendField(std::string& out, std::string_view field, const Conversion& conversion) {
    const std::size_t padding = conversion.width > field.size() ? conversion.width - field.size() : 0;
    out.append(padding, conversion.zero ? '0' : ' ');
    out.append(field);
}

void AppendArgument(std::string& out, const Conversion& conversion, const FormatArgument& argument) {
    std::array<char, longestNumber> field;
    switch (conversion.letter) {
        case 'd':
            assert(argument.kind == FormatArgument::Kind::Integer);
            return AppendField(out, IntegerText(field, argument.integer, conversion.plus), conversion);
        case 's':
            assert(argument.kind == FormatArgument::Kind::Text);
            return AppendField(out, argument.text, conversion);
        default:
            assert(conversion.letter == 'E' || conversion.letter == 'e' || conversion.letter == 'f');
            assert(argument.kind == FormatArgument::Kind::Real);
            return AppendField(out, RealText(field, argument.real, conversion), conversion);
    }
}

}  // namespace

std::string FormatArguments(std::string_view format, const FormatArgument* arguments, std::size_t count) {
    std::string out;
    out.reserve(96);
    std::size_t used = 0;
    for (std::size_t at = 0; at < format.size();) {
        if (format[at] != '%') {
            out.push_back(format[at++]);
        } else if (at + 1 < format.size() && format[at + 1] == '%') {
            out.push_back('%');
            at += 2;
        } else {
            const Conversion conversion = ReadConversion(format, ++at);
            assert(used < count);
            if (used < count) AppendArgument(out, conversion, arguments[used++]);
        }
    }
    return out;
}

// ---------------------------------------------------------------------------------------------------------------------
// Scanning

namespace {

bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// The unread rest of the text under one scan.
struct Scan {
    std::string_view rest;

    void SkipSpace() {
        while (!rest.empty() && IsSpace(rest.front())) rest.remove_prefix(1);
    }
};

// Digits of an %i conversion may carry a base: 0x for sixteen, a leading 0 for eight.
int TakeBase(std::string_view& digits) {
    if (digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
        digits.remove_prefix(2);
        return 16;
    }
    return digits.size() > 1 && digits[0] == '0' ? 8 : 10;
}

enum class Taken { Yes, No, OutOfRange };

// Takes an optional sign. from_chars knows '-' alone, and takes it only where no '+' stood before.
bool TakeSign(std::string_view& field) {
    if (field.empty() || (field.front() != '+' && field.front() != '-')) return false;
    const bool negative = field.front() == '-';
    field.remove_prefix(1);
    return negative;
}

Taken TakeInteger(Scan& scan, std::size_t width, bool anyBase, std::int32_t& value) {
    std::string_view field = scan.rest.substr(0, width);
    const bool negative = TakeSign(field);
    const int base = anyBase ? TakeBase(field) : 10;
    if (field.empty() || field.front() == '-') return Taken::No;
    std::int64_t magnitude = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), magnitude, base);
    if (error == std::errc::invalid_argument) return Taken::No;
    const std::int64_t signedValue = negative ? -magnitude : magnitude;
    scan.rest.remove_prefix(static_cast<std::size_t>(end - scan.rest.data()));
    if (error != std::errc() || signedValue != static_cast<std::int32_t>(signedValue)) return Taken::OutOfRange;
    value = static_cast<std::int32_t>(signedValue);
    return Taken::Yes;
}

// A magnitude that from_chars calls out of range is 0 when it is too small and no number when it is too large.
Taken ResolveRange(std::string_view number, float& value) {
    double wide = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), wide);
    if (error == std::errc()) {
        value = static_cast<float>(wide);
    } else {
        const std::size_t e = number.find_first_of("eE");
        const bool tiny = e != std::string_view::npos && e + 1 < number.size() && number[e + 1] == '-';
        if (!tiny) return Taken::OutOfRange;
        value = 0;
    }
    return std::isfinite(value) ? Taken::Yes : Taken::OutOfRange;
}

Taken TakeReal(Scan& scan, std::size_t width, float& value) {
    std::string_view field = scan.rest.substr(0, width);
    const bool negative = TakeSign(field);
    if (field.empty() || field.front() == '-') return Taken::No;
    const bool hexadecimal = field.size() > 2 && field[0] == '0' && (field[1] == 'x' || field[1] == 'X');
    if (hexadecimal) field.remove_prefix(2);
    const auto style = hexadecimal ? std::chars_format::hex : std::chars_format::general;
    float magnitude = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), magnitude, style);
    if (error == std::errc::invalid_argument) return Taken::No;
    const char* const last = field.data() + field.size();
    if (end != last && (*end == 'e' || *end == 'E')) return Taken::No;  // an exponent without digits
    scan.rest.remove_prefix(static_cast<std::size_t>(end - scan.rest.data()));
    if (error != std::errc()) {
        const std::string_view number(field.data(), static_cast<std::size_t>(end - field.data()));
        if (ResolveRange(number, magnitude) != Taken::Yes) return Taken::OutOfRange;
    } else if (!std::isfinite(magnitude)) {
        return Taken::OutOfRange;
    }
    value = negative ? -magnitude : magnitude;
    return Taken::Yes;
}

Taken TakeWord(Scan& scan, std::size_t width, std::string* word) {
    const std::size_t limit = std::min(width, scan.rest.size());
    std::size_t length = 0;
    while (length < limit && !IsSpace(scan.rest[length])) ++length;
    if (length == 0) return Taken::No;
    if (word != nullptr) word->assign(scan.rest.substr(0, length));
    scan.rest.remove_prefix(length);
    return Taken::Yes;
}

}  // namespace

ScanResult ScanArguments(std::string_view text, std::string_view format, const ScanTarget* targets) {
    ScanResult result;
    Scan scan{text};
    for (std::size_t at = 0; at < format.size();) {
        if (format[at] != '%') {
            assert(IsSpace(format[at]));
            scan.SkipSpace();
            ++at;
            continue;
        }
        ++at;
        const bool suppressed = at < format.size() && format[at] == '*';
        if (suppressed) ++at;
        const int digits = ReadDecimal(format, at);
        const std::size_t width = digits > 0 ? static_cast<std::size_t>(digits) : std::string_view::npos;
        const char letter = format[at++];
        scan.SkipSpace();

        Taken taken = Taken::No;
        std::int32_t ignoredInteger = 0;
        float ignoredReal = 0;
        if (letter == 's') {
            taken = TakeWord(scan, width, suppressed ? nullptr : targets->word);
        } else if (letter == 'd' || letter == 'i') {
            taken = TakeInteger(scan, width, letter == 'i', suppressed ? ignoredInteger : *targets->integer);
        } else {
            assert(letter == 'f' || letter == 'e');
            taken = TakeReal(scan, width, suppressed ? ignoredReal : *targets->real);
        }
        if (suppressed && taken == Taken::OutOfRange) taken = Taken::Yes;  // nobody looks at it
        if (taken != Taken::Yes) {
            result.outOfRange = taken == Taken::OutOfRange;
            return result;
        }
        if (!suppressed) {
            ++targets;
            ++result.fields;
        }
    }
    return result;
}

}  // namespace kaldra
