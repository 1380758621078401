#include "store/text_scan.h"

#include <bit>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#define QUILLON_SCAN_X86
#include <immintrin.h>
#elif defined(__aarch64__)
#define QUILLON_SCAN_NEON
#include <arm_neon.h>
#endif

namespace quillon
{

namespace
{

/// What is looked for, with its first and last unit at hand.
struct Needle {
    explicit Needle(QStringView text) : units(text.utf16()), last(text.size() - 1) {}
    /// Whether the needle stands at a place where its first and last unit do.
    bool standsAt(const char16_t* place) const
    {
        return last < 2 ||
               std::memcmp(place + 1, units + 1, static_cast<std::size_t>(last - 1) * sizeof(char16_t)) == 0;
    }

    const char16_t* units;
    qsizetype last; // the position of the last unit
};

const char16_t* findPlainly(const char16_t* begin, const char16_t* end, const Needle& needle)
{
    const char16_t first = needle.units[0];
    const char16_t last = needle.units[needle.last];
    for (const char16_t* place = begin; end - place > needle.last; ++place) {
        if (*place == first && place[needle.last] == last && needle.standsAt(place))
            return place;
    }
    return end;
}

// Every vector way compares a block of places with the first unit and, shifted by the needle's length, with the last
// one; only where both stand the rest is looked at. The few places at the end that fill no block are left to the
// plain way.

#ifdef QUILLON_SCAN_X86

__attribute__((target("sse2"))) const char16_t* findWithSse2(const char16_t* begin, const char16_t* end,
                                                             const Needle& needle)
{
    constexpr int Units = 8;
    const __m128i first = _mm_set1_epi16(static_cast<short>(needle.units[0]));
    const __m128i last = _mm_set1_epi16(static_cast<short>(needle.units[needle.last]));
    const char16_t* place = begin;
    for (; end - place >= needle.last + Units; place += Units) {
        const __m128i firsts = _mm_loadu_si128(reinterpret_cast<const __m128i*>(place));
        const __m128i lasts = _mm_loadu_si128(reinterpret_cast<const __m128i*>(place + needle.last));
        const __m128i both = _mm_and_si128(_mm_cmpeq_epi16(firsts, first), _mm_cmpeq_epi16(lasts, last));
        auto mask = static_cast<unsigned>(_mm_movemask_epi8(both));
        while (mask != 0) {
            const int bit = std::countr_zero(mask);
            const char16_t* candidate = place + bit / 2;
            if (needle.standsAt(candidate))
                return candidate;
            mask &= ~(3U << bit);
        }
    }
    return findPlainly(place, end, needle);
}

__attribute__((target("avx2"))) const char16_t* findWithAvx2(const char16_t* begin, const char16_t* end,
                                                             const Needle& needle)
{
    constexpr int Units = 16;
    const __m256i first = _mm256_set1_epi16(static_cast<short>(needle.units[0]));
    const __m256i last = _mm256_set1_epi16(static_cast<short>(needle.units[needle.last]));
    const auto compare = [&](const char16_t* place) __attribute__((target("avx2")))
    {
        const __m256i firsts = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(place));
        const __m256i lasts = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(place + needle.last));
        return _mm256_and_si256(_mm256_cmpeq_epi16(firsts, first), _mm256_cmpeq_epi16(lasts, last));
    };
    const auto lookAt = [&](const char16_t* place, __m256i both) __attribute__((target("avx2")))
                            ->const char16_t*
    {
        auto mask = static_cast<unsigned>(_mm256_movemask_epi8(both));
        while (mask != 0) {
            const int bit = std::countr_zero(mask);
            const char16_t* candidate = place + bit / 2;
            if (needle.standsAt(candidate))
                return candidate;
            mask &= ~(3U << bit);
        }
        return nullptr;
    };
    const char16_t* place = begin;
    // Most blocks hold nothing: four of them are asked with one branch. What comes two pages later is sent for at the
    // same time; waiting for memory is what takes longest here. Sending for what is not there does no harm.
    constexpr int CacheLine = 32;
    constexpr int Ahead = 128 * CacheLine;
    for (; end - place >= needle.last + 4 * Units; place += 4 * Units) {
        _mm_prefetch(place + Ahead, _MM_HINT_T0);
        _mm_prefetch(place + Ahead + CacheLine, _MM_HINT_T0);
        const __m256i both[] = {compare(place), compare(place + Units), compare(place + 2 * Units),
                                compare(place + 3 * Units)};
        const __m256i any =
            _mm256_or_si256(_mm256_or_si256(both[0], both[1]), _mm256_or_si256(both[2], both[3]));
        if (_mm256_testz_si256(any, any) != 0)
            continue;
        for (int i = 0; i < 4; ++i) {
            if (const char16_t* found = lookAt(place + i * Units, both[i]))
                return found;
        }
    }
    for (; end - place >= needle.last + Units; place += Units) {
        if (const char16_t* found = lookAt(place, compare(place)))
            return found;
    }
    return findPlainly(place, end, needle);
}

#endif

#ifdef QUILLON_SCAN_NEON

const char16_t* findWithNeon(const char16_t* begin, const char16_t* end, const Needle& needle)
{
    constexpr int Units = 8;
    const uint16x8_t first = vdupq_n_u16(needle.units[0]);
    const uint16x8_t last = vdupq_n_u16(needle.units[needle.last]);
    const char16_t* place = begin;
    for (; end - place >= needle.last + Units; place += Units) {
        const uint16x8_t firsts = vld1q_u16(reinterpret_cast<const uint16_t*>(place));
        const uint16x8_t lasts = vld1q_u16(reinterpret_cast<const uint16_t*>(place + needle.last));
        const uint16x8_t both = vandq_u16(vceqq_u16(firsts, first), vceqq_u16(lasts, last));
        if (vmaxvq_u16(both) == 0)
            continue;
        const char16_t* found = findPlainly(place, place + Units + needle.last, needle);
        if (found != place + Units + needle.last)
            return found;
    }
    return findPlainly(place, end, needle);
}

#endif

} // namespace

std::vector<ScanKernel> availableScanKernels()
{
    std::vector<ScanKernel> kernels;
#ifdef QUILLON_SCAN_X86
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2"))
        kernels.push_back(ScanKernel::Avx2);
    if (__builtin_cpu_supports("sse2"))
        kernels.push_back(ScanKernel::Sse2);
#endif
#ifdef QUILLON_SCAN_NEON
    kernels.push_back(ScanKernel::Neon);
#endif
    kernels.push_back(ScanKernel::Plain);
    return kernels;
}

const char16_t* findUnits(ScanKernel kernel, const char16_t* begin, const char16_t* end, QStringView text)
{
    const Needle needle(text);
    switch (kernel) {
#ifdef QUILLON_SCAN_X86
    case ScanKernel::Avx2:
        return findWithAvx2(begin, end, needle);
    case ScanKernel::Sse2:
        return findWithSse2(begin, end, needle);
#endif
#ifdef QUILLON_SCAN_NEON
    case ScanKernel::Neon:
        return findWithNeon(begin, end, needle);
#endif
    default:
        return findPlainly(begin, end, needle);
    }
}

} // namespace quillon
