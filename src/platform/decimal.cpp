#include "platform/decimal.h"

#include <bit>
#include <cfloat>
#include <cstddef>

namespace kaldra {

static_assert(FLT_EVAL_METHOD == 0, "an f32 operation must round to f32");

namespace {

__extension__ using Wide = unsigned __int128;

// ---------------------------------------------------------------------------------------------------------------------
// Powers of ten: 10^q is at least bits[q] * 2^(BinaryExponent(q) - 63), and less than that for bits[q] + 1.

constexpr int leastPower = -308;
constexpr int mostPower = 325;
constexpr int mostExactPower = 27;  // 5^27 fits 64 bits

// floor(q * log2(10)), of 10^q.
constexpr int BinaryExponent(int q) { return (q * 217706) >> 16; }

// floor(e * log10(2)), of 2^e.
constexpr int DecimalExponent(int e) { return (e * 78913) >> 18; }

constexpr bool IsExact(int q) { return q >= 0 && q <= mostExactPower; }

// A natural number of up to 1088 bits, lowest limb first.
struct Natural {
    std::array<std::uint32_t, 34> limbs{};

    constexpr void MultiplyBy5() {
        std::uint64_t carry = 0;
        for (std::uint32_t& limb : limbs) {
            carry += std::uint64_t{limb} * 5;
            limb = static_cast<std::uint32_t>(carry);
            carry >>= 32U;
        }
    }
    constexpr void DivideBy5() {
        std::uint64_t rest = 0;
        for (std::size_t i = limbs.size(); i-- > 0;) {
            rest = rest << 32U | limbs[i];
            limbs[i] = static_cast<std::uint32_t>(rest / 5);
            rest %= 5;
        }
    }
    [[nodiscard]] constexpr int TopBit() const {
        std::size_t i = limbs.size() - 1;
        while (limbs[i] == 0) --i;
        return static_cast<int>(i) * 32 + 31 - std::countl_zero(limbs[i]);
    }
    [[nodiscard]] constexpr std::uint64_t TopBits() const {
        std::uint64_t bits = 0;
        for (int at = TopBit(), left = 64; left > 0; --at, --left) {
            const auto place = static_cast<std::size_t>(at);
            bits = bits << 1U | (at >= 0 ? limbs[place / 32] >> (place % 32) & 1U : 0U);
        }
        return bits;
    }
};

struct PowerTable {
    std::array<std::uint64_t, mostPower - leastPower + 1> bits{};
    bool exponentsHold = true;

    constexpr PowerTable() {
        Natural power;
        power.limbs[0] = 1;
        for (int q = 0; q <= mostPower; ++q, power.MultiplyBy5()) Note(q, power, q);
        // floor(floor(x / 5) / 5) is floor(x / 25): the bits stay those of the true quotient.
        constexpr int unit = 1087;
        Natural quotient;
        quotient.limbs.back() = 1U << 31U;
        for (int q = 0; q >= leastPower; --q, quotient.DivideBy5()) Note(q, quotient, q - unit);
    }
    constexpr void Note(int q, const Natural& number, int scale) {
        bits[static_cast<std::size_t>(q - leastPower)] = number.TopBits();
        exponentsHold = exponentsHold && number.TopBit() + scale == BinaryExponent(q);
    }
};

constexpr PowerTable powers;

constexpr std::uint64_t PowerBits(int q) { return powers.bits[static_cast<std::size_t>(q - leastPower)]; }

// 10^k <= 2^e < 10^(k + 1) for k = DecimalExponent(e) of every normal f64. No power of ten but 1 is one of two.
constexpr bool DecimalExponentsHold() {
    for (int e = -1022; e <= 1023; ++e) {
        const int k = DecimalExponent(e);
        if (k != 0 && k >= leastPower && BinaryExponent(k) >= e) return false;
        if (BinaryExponent(k + 1) < e) return false;
    }
    return DecimalExponent(0) == 0;
}

static_assert(powers.exponentsHold && DecimalExponentsHold());

// Smallest numbers of n + 1 digits.
constexpr auto decimalUnits = [] {
    std::array<std::uint64_t, mostScientificDecimals + 2> units{1};
    for (std::size_t i = 1; i < units.size(); ++i) units[i] = units[i - 1] * 10;
    return units;
}();

// ---------------------------------------------------------------------------------------------------------------------

// Rounds the product of a number and 10^q to its bits from 64 + `shift` on, ties to even. The true value lies, unless
// the power is exact, above the product and less than 2^64 above it.
bool RoundProduct(Wide product, unsigned shift, bool exact, std::uint64_t& rounded) {
    const auto upper = static_cast<std::uint64_t>(product >> 64U);
    const auto lower = static_cast<std::uint64_t>(product);
    const std::uint64_t unit = std::uint64_t{1} << shift;
    const std::uint64_t half = unit / 2;
    const std::uint64_t rest = upper & (unit - 1);
    if (rest == half - 1 && !exact) return false;
    const bool staysDown = (rest == half) & (lower == 0) & exact & ((upper & unit) == 0);  // a tie, even below
    rounded = (upper >> shift) + ((rest >= half) & !staysDown);
    return true;
}

}  // namespace

bool RoundToDecimals(double value, int decimals, std::uint64_t& digits, int& exponent) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const auto field = static_cast<int>(bits >> 52U & 0x7ffU);
    if (decimals < 0 || decimals > mostScientificDecimals || field == 0x7ff) return false;
    if (field == 0) {
        digits = 0;
        exponent = 0;
        return bits << 1U == 0;
    }
    const std::uint64_t mantissa = bits << 11U | std::uint64_t{1} << 63U;
    const int e = field - 1023;
    int k = DecimalExponent(e);
    // Without a branch. 10^(k + 1) itself is found below.
    k += static_cast<int>(BinaryExponent(k + 1) == e) & static_cast<int>(mantissa > PowerBits(k + 1));
    const int q = decimals - k;
    const Wide product = Wide{mantissa} * PowerBits(q);
    const auto shift = static_cast<unsigned>(62 - e - BinaryExponent(q));
    if (!RoundProduct(product, shift, IsExact(q), digits)) return false;
    if (digits == decimalUnits[static_cast<std::size_t>(decimals) + 1]) {
        digits /= 10;
        ++k;
    }
    exponent = k;
    return true;
}

bool NearestFloatByProduct(std::uint64_t digits, int exponent, float& value) {
    if (exponent < -65 || exponent > 38) return false;
    const int zeros = std::countl_zero(digits);
    const Wide product = Wide{digits << zeros} * PowerBits(exponent);
    const auto top = static_cast<int>(product >> 127U);
    const int e = 63 - zeros + BinaryExponent(exponent) + top;
    if (e < -126 || e > 127) return false;
    std::uint64_t mantissa = 0;
    if (!RoundProduct(product, static_cast<unsigned>(39 + top), IsExact(exponent), mantissa)) return false;
    // The mantissa's leading bit, and a carry out of it, count up the exponent.
    const auto bits = static_cast<std::uint32_t>((static_cast<std::uint64_t>(e + 126) << 23U) + mantissa);
    value = std::bit_cast<float>(bits);
    return bits < 0x7f800000U;
}

}  // namespace kaldra
