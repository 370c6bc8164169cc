#include "platform/sha256.h"

#include <array>
#include <bit>
#include <cstdint>
#include <vector>

#include "platform/files.h"
#include "platform/processor.h"

#if defined(__x86_64__)
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace kaldra {

namespace {

constexpr std::size_t blockBytes = 64;

using Words = std::array<std::uint32_t, 64>;

constexpr Words roundConstants{
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

using State = std::array<std::uint32_t, 8>;

Words Schedule(const char* block) {
    Words w{};
    for (std::size_t i = 0; i < blockBytes; ++i) w[i / 4] = w[i / 4] << 8 | static_cast<unsigned char>(block[i]);
    for (std::size_t t = 16; t < w.size(); ++t) {
        const std::uint32_t a = w[t - 15];
        const std::uint32_t b = w[t - 2];
        const std::uint32_t s0 = std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3;
        const std::uint32_t s1 = std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10;
        w[t] = w[t - 16] + s0 + w[t - 7] + s1;
    }
    return w;
}

void TakeBlock(State& state, const char* block) {
    const Words w = Schedule(block);
    State v = state;  // a to h
    for (std::size_t t = 0; t < w.size(); ++t) {
        const std::uint32_t s1 = std::rotr(v[4], 6) ^ std::rotr(v[4], 11) ^ std::rotr(v[4], 25);
        const std::uint32_t s0 = std::rotr(v[0], 2) ^ std::rotr(v[0], 13) ^ std::rotr(v[0], 22);
        const std::uint32_t choice = (v[4] & v[5]) ^ (~v[4] & v[6]);
        const std::uint32_t majority = (v[0] & v[1]) ^ (v[0] & v[2]) ^ (v[1] & v[2]);
        const std::uint32_t t1 = v[7] + s1 + choice + roundConstants[t] + w[t];
        v = {t1 + s0 + majority, v[0], v[1], v[2], v[3] + t1, v[4], v[5], v[6]};
    }
    for (std::size_t i = 0; i < state.size(); ++i) state[i] += v[i];
}

void TakeBlocksPlainly(State& state, std::string_view blocks) {
    for (; !blocks.empty(); blocks.remove_prefix(blockBytes)) TakeBlock(state, blocks.data());
}

#if defined(__x86_64__)

bool HasShaInstructions() {
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
    unsigned d = 0;
    return __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b >> 29 & 1) != 0;
}

// The processor's own instructions do two rounds each; they keep a, b, e, f in one register and c, d, g, h in another,
// from the highest word down.
__attribute__((target("sha,sse4.1"))) void TakeBlocksByInstructions(State& state, std::string_view blocks) {
    const auto words = [](std::uint32_t w3, std::uint32_t w2, std::uint32_t w1, std::uint32_t w0) {
        return _mm_set_epi32(static_cast<int>(w3), static_cast<int>(w2), static_cast<int>(w1), static_cast<int>(w0));
    };
    const __m128i bigEndian = _mm_set_epi64x(0x0c0d0e0f08090a0b, 0x0405060700010203);
    __m128i abef = words(state[0], state[1], state[4], state[5]);
    __m128i cdgh = words(state[2], state[3], state[6], state[7]);
    for (; !blocks.empty(); blocks.remove_prefix(blockBytes)) {
        const __m128i oldAbef = abef;
        const __m128i oldCdgh = cdgh;
        __m128i w[4];  // sixteen words of the schedule, the four next ones at round / 4 % 4
        for (std::size_t i = 0; i < 4; ++i) {
            w[i] = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(blocks.data()) + i), bigEndian);
        }
        for (std::size_t i = 0; i < roundConstants.size() / 4; ++i) {
            __m128i& next = w[i % 4];
            const __m128i last = w[(i + 3) % 4];
            const __m128i sum =
                _mm_add_epi32(next, _mm_loadu_si128(reinterpret_cast<const __m128i*>(roundConstants.data()) + i));
            cdgh = _mm_sha256rnds2_epu32(cdgh, abef, sum);
            abef = _mm_sha256rnds2_epu32(abef, cdgh, _mm_shuffle_epi32(sum, 0x0e));
            const __m128i before = _mm_alignr_epi8(last, w[(i + 2) % 4], 4);
            next = _mm_sha256msg2_epu32(_mm_add_epi32(_mm_sha256msg1_epu32(next, w[(i + 1) % 4]), before), last);
        }
        abef = _mm_add_epi32(abef, oldAbef);
        cdgh = _mm_add_epi32(cdgh, oldCdgh);
    }
    const auto word = [](__m128i four, int i) {
        alignas(16) std::array<std::uint32_t, 4> stored;
        _mm_store_si128(reinterpret_cast<__m128i*>(stored.data()), four);
        return stored[static_cast<std::size_t>(i)];
    };
    state = {word(abef, 3), word(abef, 2), word(cdgh, 3), word(cdgh, 2),
             word(abef, 1), word(abef, 0), word(cdgh, 1), word(cdgh, 0)};
}

void TakeBlocks(State& state, std::string_view blocks) {
    static const bool hasInstructions = HasShaInstructions();
    if (hasInstructions && UsedProcessorLevel() != ProcessorLevel::Plain) {
        return TakeBlocksByInstructions(state, blocks);
    }
    TakeBlocksPlainly(state, blocks);
}

#else

void TakeBlocks(State& state, std::string_view blocks) { TakeBlocksPlainly(state, blocks); }

#endif

// What the whole blocks leave, a one bit, zeros, and the length in bits.
std::string Padding(std::string_view rest, std::uint64_t length) {
    std::string end(rest);
    end += '\x80';
    while (end.size() % blockBytes != blockBytes - 8) end += '\0';
    for (int shift = 56; shift >= 0; shift -= 8) end += static_cast<char>(length * 8 >> shift & 255);
    return end;
}

std::string Hexadecimal(const State& state) {
    std::string text;
    for (const std::uint32_t word : state) {
        for (int shift = 28; shift >= 0; shift -= 4) text += "0123456789abcdef"[word >> shift & 15];
    }
    return text;
}

class Digest {
public:
    // All calls but the last with a multiple of 64 bytes.
    void Take(std::string_view bytes) {
        length_ += bytes.size();
        const std::size_t whole = bytes.size() / blockBytes * blockBytes;
        TakeBlocks(state_, bytes.substr(0, whole));
        rest_ = bytes.substr(whole);
    }
    [[nodiscard]] std::string End() {
        TakeBlocks(state_, Padding(rest_, length_));
        return Hexadecimal(state_);
    }

private:
    State state_{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::uint64_t length_ = 0;
    std::string rest_;
};

}  // namespace

std::string Sha256(std::string_view bytes) {
    Digest digest;
    digest.Take(bytes);
    return digest.End();
}

std::string Sha256OfFile(const std::string& path) {
    File file;
    if (!file.OpenForReading(path)) {
        (void)TakeLastSystemError();
        return {};
    }
    Digest digest;
    std::vector<char> block(1 << 16);
    for (;;) {
        const std::int64_t count = file.Read(block);
        if (count < 0) return {};
        digest.Take({block.data(), static_cast<std::size_t>(count)});
        if (count < static_cast<std::int64_t>(block.size())) return digest.End();
    }
}

}  // namespace kaldra
