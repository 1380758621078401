#pragma once

#include <QByteArrayView>
#include <QtEndian>

#include <type_traits>

namespace quillon::old_format
{

/// Whether `count` bytes lie at `at`, whatever a damaged file says these numbers are.
inline bool holds(QByteArrayView bytes, qsizetype at, qsizetype count)
{
    return at >= 0 && count >= 0 && at <= bytes.size() && count <= bytes.size() - at;
}

/// The number at `at`, which must be there.
template <class Number> Number numberAt(QByteArrayView bytes, qsizetype at)
{
    static_assert(std::is_integral_v<Number>);
    Q_ASSERT(holds(bytes, at, sizeof(Number)));
    return qFromLittleEndian<Number>(bytes.data() + at);
}

inline quint8 byteAt(QByteArrayView bytes, qsizetype at)
{
    return numberAt<quint8>(bytes, at);
}

} // namespace quillon::old_format
