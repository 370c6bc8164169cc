// Decimal digits of binary numbers and back, exact to the last bit or not at all.
//
// Both ways scale a number by one truncated 64-bit power of ten. The product lies less than one unit of its upper half
// below the true value, so that it rounds to the true result unless a halfway point stands within that unit. Then, and
// for numbers at the ends of the range, these procedures give false and leave the number to long arithmetic.
//
// W. D. Clinger, How to read floating point numbers accurately, PLDI 1990: short decimals by one f32 operation.
// D. Lemire, Number parsing at a gigabyte per second, Software: Practice and Experience 51, 2021: the product.
#pragma once

#include <array>
#include <cstdint>

namespace kaldra {

inline constexpr int mostScientificDecimals = 15;

// Rounds a value to d.ddd times a power of ten with `decimals` digits behind the point, ties to even, its sign aside:
// |value| is about digits * 10^(exponent - decimals). Gives false where it is in doubt, for denormals, and where the
// value is not finite or more than mostScientificDecimals are wanted.
[[nodiscard]] bool RoundToDecimals(double value, int decimals, std::uint64_t& digits, int& exponent);

// NearestFloat by way of the product. `digits` is not 0.
[[nodiscard]] bool NearestFloatByProduct(std::uint64_t digits, int exponent, float& value);

// The f32 nearest to digits * 10^exponent, ties to even. Gives false where it is in doubt or the value is not within
// the normal numbers.
[[nodiscard]] inline bool NearestFloat(std::uint64_t digits, int exponent, float& value) {
    constexpr std::array<float, 11> exactPowers{1e0F, 1e1F, 1e2F, 1e3F, 1e4F, 1e5F, 1e6F, 1e7F, 1e8F, 1e9F, 1e10F};
    constexpr std::uint64_t exactDigits = 1U << 24U;
    if (digits > exactDigits || exponent < -10 || exponent > 10) {
        if (digits != 0) return NearestFloatByProduct(digits, exponent, value);
        value = 0;
        return true;
    }
    const float exact = static_cast<float>(digits);
    value = exponent < 0 ? exact / exactPowers[static_cast<std::size_t>(-exponent)]
                         : exact * exactPowers[static_cast<std::size_t>(exponent)];
    return true;
}

}  // namespace kaldra
