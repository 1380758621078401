#include "store/text_scan.h"

#include <bit>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace quillon
{

namespace
{

/// What is looked for, with its first and last unit at hand.
struct Needle {
    explicit Needle(QStringView text)
        : units(text.utf16()), lastPosition(text.size() - 1), first(units[0]), last(units[lastPosition])
    {
    }
    /// Whether the needle stands at a place where its first and last unit do.
    bool standsAt(const char16_t* place) const
    {
        return lastPosition < 2 ||
               std::memcmp(place + 1, units + 1,
                           static_cast<std::size_t>(lastPosition - 1) * sizeof(char16_t)) == 0;
    }

    const char16_t* units;
    qsizetype lastPosition;
    char16_t first;
    char16_t last;
};

const char16_t* findPlainly(const char16_t* begin, const char16_t* end, const Needle& needle)
{
    for (const char16_t* place = begin; end - place > needle.lastPosition; ++place) {
        if (*place == needle.first && place[needle.lastPosition] == needle.last && needle.standsAt(place))
            return place;
    }
    return end;
}

#ifdef __SSE2__

constexpr qsizetype VectorUnits = sizeof(__m128i) / sizeof(char16_t);

__m128i load(const char16_t* units)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
}

/// Compares a vector of places with the first unit and, shifted by the needle's length, with the last one; only where
/// both stand the rest is looked at. The few places at the end that fill no block are left to the plain scan.
const char16_t* findWithVectors(const char16_t* begin, const char16_t* end, const Needle& needle)
{
    const __m128i firstUnit = _mm_set1_epi16(static_cast<short>(needle.first));
    const __m128i lastUnit = _mm_set1_epi16(static_cast<short>(needle.last));
    const auto compare = [&](const char16_t* place) {
        return _mm_and_si128(_mm_cmpeq_epi16(load(place), firstUnit),
                             _mm_cmpeq_epi16(load(place + needle.lastPosition), lastUnit));
    };
    // Most blocks hold nothing: one is a cache line, asked with one branch. What comes two pages later is sent for at
    // the same time; waiting for memory is what takes longest here. Sending for what is not there does no harm.
    constexpr int Vectors = 4;
    constexpr qsizetype BlockUnits = Vectors * VectorUnits;
    constexpr qsizetype Ahead = 128 * BlockUnits;
    const char16_t* place = begin;
    for (; end - place >= needle.lastPosition + BlockUnits; place += BlockUnits) {
        _mm_prefetch(reinterpret_cast<const char*>(place + Ahead), _MM_HINT_T0);
        // NOLINTNEXTLINE(modernize-avoid-c-arrays): as a template argument the type would lose its alignment
        const __m128i both[Vectors] = {compare(place), compare(place + VectorUnits),
                                       compare(place + 2 * VectorUnits), compare(place + 3 * VectorUnits)};
        const __m128i any = _mm_or_si128(_mm_or_si128(both[0], both[1]), _mm_or_si128(both[2], both[3]));
        if (_mm_movemask_epi8(any) == 0)
            continue;
        for (int vector = 0; vector < Vectors; ++vector) {
            auto mask = static_cast<unsigned>(_mm_movemask_epi8(both[vector])); // two bits for every unit
            while (mask != 0) {
                const int bit = std::countr_zero(mask);
                const char16_t* candidate = place + vector * VectorUnits + bit / 2;
                if (needle.standsAt(candidate))
                    return candidate;
                mask &= ~(3U << bit);
            }
        }
    }
    return findPlainly(place, end, needle);
}

#endif

} // namespace

const char16_t* findUnitsPlainly(const char16_t* begin, const char16_t* end, QStringView needle)
{
    return findPlainly(begin, end, Needle(needle));
}

const char16_t* findUnits(const char16_t* begin, const char16_t* end, QStringView needle)
{
#ifdef __SSE2__
    return findWithVectors(begin, end, Needle(needle));
#else
    return findPlainly(begin, end, Needle(needle));
#endif
}

} // namespace quillon
