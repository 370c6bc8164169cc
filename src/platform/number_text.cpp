#include "platform/number_text.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <charconv>
#include <cmath>
#include <cstring>
#include <system_error>

#include "platform/decimal.h"

namespace kaldra {

// ---------------------------------------------------------------------------------------------------------------------
// Formatting

namespace {

// Largest field: sign, 39 integer digits of the largest f32 and the decimals of an f format, or a 19-digit integer.
constexpr std::size_t longestNumber = 400;

constexpr auto digitPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

// Puts the last `count` digits of a number in front of `end`, and takes them off the number.
char* PutDigitsBefore(char* end, std::uint64_t& number, int count) {
    for (; count >= 2; count -= 2) {
        end -= 2;
        std::memcpy(end, digitPairs.data() + number % 100 * 2, 2);
        number /= 100;
    }
    if (count == 1) {
        *--end = static_cast<char>('0' + number % 10);
        number /= 10;
    }
    return end;
}

// The eight characters of a number below 10^8, the first one in the lowest byte: halved into lanes of four digits, of
// two and of one. The factors divide by 100 and by 10, exactly for numbers of so few digits.
std::uint64_t EightDigits(std::uint64_t number) {
    const std::uint64_t fours = number / 10000 | number % 10000 << 32U;
    const std::uint64_t hundreds = fours * 5243 >> 19U & 0x0000'007f'0000'007fU;
    const std::uint64_t twos = hundreds | (fours - hundreds * 100) << 16U;
    const std::uint64_t tens = twos * 103 >> 10U & 0x000f'000f'000f'000fU;
    return (tens | (twos - tens * 10) << 8U) + 0x3030'3030'3030'3030U;
}

// Puts d.ddd, one digit and the decimals. Up to eight characters behind the point are overwritten.
char* PutMantissa(char* out, std::uint64_t digits, int decimals) {
    constexpr int leastAtOnce = 3;  // so that the exponent stands wherever a spare character was put
    constexpr int mostAtOnce = 7;
    constexpr bool lowestFirst = std::endian::native == std::endian::little;
    char* const end = out + (decimals > 0 ? decimals + 2 : 1);
    if (lowestFirst && decimals >= leastAtOnce && decimals <= mostAtOnce) {
        const std::uint64_t text = EightDigits(digits) >> static_cast<unsigned>(8 * (mostAtOnce - decimals));
        const std::uint64_t behindPoint = text >> 8U;
        out[0] = static_cast<char>(text & 0xffU);
        out[1] = '.';
        std::memcpy(out + 2, &behindPoint, sizeof behindPoint);
        return end;
    }
    PutDigitsBefore(end, digits, decimals);
    out[1] = '.';
    out[0] = static_cast<char>('0' + digits);
    return end;
}

int CountDigits(std::uint64_t number) {
    int count = 1;
    for (; number >= 1000; number /= 1000) count += 3;
    return count + (number >= 10) + (number >= 100);
}

char* Pad(char* out, const Conversion& conversion, std::size_t length) {
    for (; length < conversion.width; ++length) *out++ = conversion.zero ? '0' : ' ';
    return out;
}

// The way of long arithmetic. The exponent's two digits of the library become three.
std::string_view LongRealText(std::array<char, longestNumber>& field, double value, const Conversion& conversion) {
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
    Conversion unpadded = conversion;
    unpadded.width = 0;
    const char* end = field.data();
    if (conversion.letter == 's') {
        assert(argument.kind == FormatArgument::Kind::Text);
        return AppendField(out, argument.text, conversion);
    }
    if (conversion.letter == 'd') {
        assert(argument.kind == FormatArgument::Kind::Integer);
        end = PutInteger(field.data(), unpadded, argument.integer);
    } else {
        assert(conversion.letter == 'E' || conversion.letter == 'e' || conversion.letter == 'f');
        assert(argument.kind == FormatArgument::Kind::Real);
        end = PutReal(field.data(), unpadded, argument.real);
    }
    AppendField(out, {field.data(), end}, conversion);
}

}  // namespace

char* PutInteger(char* out, const Conversion& conversion, std::int64_t value) {
    const bool negative = value < 0;
    std::uint64_t magnitude = negative ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    const bool hasSign = negative || conversion.plus;
    const int digits = CountDigits(magnitude);
    out = Pad(out, conversion, static_cast<std::size_t>(digits) + hasSign);
    if (hasSign) *out++ = negative ? '-' : '+';
    PutDigitsBefore(out + digits, magnitude, digits);
    return out + digits;
}

char* PutReal(char* out, const Conversion& conversion, double value) {
    std::uint64_t digits = 0;
    int exponent = 0;
    if (conversion.letter == 'f' || !RoundToDecimals(value, conversion.precision, digits, exponent)) {
        std::array<char, longestNumber> field;
        const std::string_view text = LongRealText(field, value, conversion);
        out = Pad(out, conversion, text.size());
        return out + text.copy(out, text.size());
    }
    const bool negative = std::signbit(value);
    const bool hasSign = negative || conversion.plus;
    const int decimals = conversion.precision;
    constexpr std::size_t exponentLength = 5;
    const std::size_t mantissaLength = decimals > 0 ? static_cast<std::size_t>(decimals) + 2 : 1;
    out = Pad(out, conversion, hasSign + mantissaLength + exponentLength);
    if (hasSign) *out++ = negative ? '-' : '+';
    out = PutMantissa(out, digits, decimals);
    const auto power = static_cast<std::size_t>(exponent < 0 ? -exponent : exponent);
    out[0] = 'E';
    out[1] = exponent < 0 ? '-' : '+';
    out[2] = static_cast<char>('0' + power / 100);
    std::memcpy(out + 3, digitPairs.data() + power % 100 * 2, 2);
    return out + exponentLength;
}

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
    const char* at;
    const char* end;

    void SkipSpace() {
        while (at != end && IsSpace(*at)) ++at;
    }
    // What a conversion of this width may take, 0 for any.
    [[nodiscard]] std::string_view Field(std::size_t width) const {
        const auto rest = static_cast<std::size_t>(end - at);
        return {at, width == 0 ? rest : std::min(width, rest)};
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

// Takes up to nine decimal digits that nothing else follows in the number. Gives false, and takes nothing, for others.
bool TakeShortInteger(std::string_view field, std::int32_t& magnitude, const char*& behind) {
    constexpr std::size_t surelyFitting = 9;
    const std::size_t limit = std::min(field.size(), surelyFitting + 1);
    std::size_t length = 0;
    std::int32_t value = 0;
    for (; length < limit && IsDigit(field[length]); ++length) {
        if (length == surelyFitting) return false;
        value = value * 10 + (field[length] - '0');
    }
    if (length == 0) return false;
    magnitude = value;
    behind = field.data() + length;
    return true;
}

Taken TakeInteger(Scan& scan, std::size_t width, bool anyBase, std::int32_t& value) {
    std::string_view field = scan.Field(width);
    const bool negative = TakeSign(field);
    std::int32_t shortMagnitude = 0;
    if (!anyBase && TakeShortInteger(field, shortMagnitude, scan.at)) {
        value = negative ? -shortMagnitude : shortMagnitude;
        return Taken::Yes;
    }
    const int base = anyBase ? TakeBase(field) : 10;
    if (field.empty() || field.front() == '-') return Taken::No;
    std::int64_t magnitude = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), magnitude, base);
    if (error == std::errc::invalid_argument) return Taken::No;
    const std::int64_t signedValue = negative ? -magnitude : magnitude;
    scan.at = end;
    if (error != std::errc() || signedValue != static_cast<std::int32_t>(signedValue)) return Taken::OutOfRange;
    value = static_cast<std::int32_t>(signedValue);
    return Taken::Yes;
}

// The digits of a plain decimal number: digits * 10^exponent, read up to `at`.
struct PlainDecimal {
    const char* at;
    const char* end;
    std::uint64_t digits = 0;
    int exponent = 0;

    // Gives the number of digits taken. Nineteen of them fit.
    std::ptrdiff_t TakeDigits() {
        const char* const first = at;
        for (; at != end && IsDigit(*at); ++at) digits = digits * 10 + static_cast<std::uint64_t>(*at - '0');
        return at - first;
    }
    bool TakeExponent() {
        const bool negative = ++at != end && *at == '-';
        if (at != end && (*at == '-' || *at == '+')) ++at;
        int value = 0;
        const char* const first = at;
        for (; at != end && IsDigit(*at) && at - first < 4; ++at) value = value * 10 + (*at - '0');
        exponent += negative ? -value : value;
        return at != first && at - first < 4;
    }
    // Gives false where there is anything uncommon: no digits or too many, an exponent that is none or far too large, a
    // hexadecimal number.
    bool Take() {
        std::ptrdiff_t count = TakeDigits();
        if (at != end && *at == '.') {
            ++at;
            const std::ptrdiff_t decimals = TakeDigits();
            exponent = -static_cast<int>(decimals);
            count += decimals;
        }
        constexpr std::ptrdiff_t fitting = 19;
        if (count == 0 || count > fitting) return false;
        if (at == end) return true;
        if (*at == 'e' || *at == 'E') return TakeExponent();
        return *at != 'x' && *at != 'X';
    }
};

bool TakePlainReal(std::string_view field, float& magnitude, const char*& behind) {
    PlainDecimal number{field.data(), field.data() + field.size()};
    if (!number.Take() || !NearestFloat(number.digits, number.exponent, magnitude)) return false;
    behind = number.at;
    return true;
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
    std::string_view field = scan.Field(width);
    const bool negative = TakeSign(field);
    float magnitude = 0;
    if (TakePlainReal(field, magnitude, scan.at)) {
        value = negative ? -magnitude : magnitude;
        return Taken::Yes;
    }
    if (field.empty() || field.front() == '-') return Taken::No;
    const bool hexadecimal = field.size() > 2 && field[0] == '0' && (field[1] == 'x' || field[1] == 'X');
    if (hexadecimal) field.remove_prefix(2);
    const auto style = hexadecimal ? std::chars_format::hex : std::chars_format::general;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), magnitude, style);
    if (error == std::errc::invalid_argument) return Taken::No;
    const char* const last = field.data() + field.size();
    if (end != last && (*end == 'e' || *end == 'E')) return Taken::No;  // an exponent without digits
    scan.at = end;
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
    const std::string_view field = scan.Field(width);
    const auto* const end = std::find_if(field.begin(), field.end(), IsSpace);
    const auto length = static_cast<std::size_t>(end - field.begin());
    if (length == 0) return Taken::No;
    if (word != nullptr) word->assign(field.substr(0, length));
    scan.at += length;
    return Taken::Yes;
}

Taken TakeField(Scan& scan, const ScanFormat::Field& field, const ScanTarget* target) {
    std::int32_t ignoredInteger = 0;
    float ignoredReal = 0;
    scan.SkipSpace();
    switch (field.letter) {
        case 's':
            return TakeWord(scan, field.width, target ? target->word : nullptr);
        case 'd':
        case 'i':
            return TakeInteger(scan, field.width, field.letter == 'i', target ? *target->integer : ignoredInteger);
        default:
            return TakeReal(scan, field.width, target ? *target->real : ignoredReal);
    }
}

}  // namespace

ScanResult ScanArguments(std::string_view text, const ScanFormat& format, const ScanTarget* targets) {
    ScanResult result;
    Scan scan{text.data(), text.data() + text.size()};
    for (std::size_t i = 0; i < format.count; ++i) {
        const ScanFormat::Field& field = format.fields[i];
        const Taken taken = TakeField(scan, field, field.suppressed ? nullptr : targets);
        const bool unwanted = field.suppressed && taken == Taken::OutOfRange;  // nobody looks at it
        if (taken != Taken::Yes && !unwanted) {
            result.outOfRange = taken == Taken::OutOfRange;
            return result;
        }
        if (!field.suppressed) {
            ++targets;
            ++result.fields;
        }
    }
    return result;
}

}  // namespace kaldra
