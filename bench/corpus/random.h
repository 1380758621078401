#pragma once

#include <QtGlobal>

namespace quillon::corpus
{

/// SplitMix64: the same numbers from the same seed on every platform, which the standard distributions do not promise.
class Random
{
public:
    /// `stream`: numbers of different streams are independent, so that more files do not change the definitions.
    Random(quint64 seed, quint64 stream) : m_state(mixed(seed + Step) ^ (stream * 0xD1B54A32D192ED03U))
    {
        next();
    }

    quint64 next()
    {
        m_state += Step;
        return mixed(m_state);
    }
    /// A number from 0 up to, but not including, `bound`.
    quint32 below(quint32 bound) { return static_cast<quint32>(((next() >> 32U) * bound) >> 32U); }
    /// The same for sizes; the corpus has fewer than 2^32 of anything.
    std::size_t index(std::size_t size) { return below(static_cast<quint32>(size)); }
    int between(int first, int last)
    {
        return first + static_cast<int>(below(static_cast<quint32>(last - first + 1)));
    }
    bool chance(quint32 percent) { return below(100) < percent; }

private:
    static constexpr quint64 Step = 0x9E3779B97F4A7C15U;

    static quint64 mixed(quint64 state)
    {
        state = (state ^ (state >> 30U)) * 0xBF58476D1CE4E5B9U;
        state = (state ^ (state >> 27U)) * 0x94D049BB133111EBU;
        return state ^ (state >> 31U);
    }

    quint64 m_state;
};

} // namespace quillon::corpus
