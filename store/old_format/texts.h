#pragma once

#include "store/old_format/pages.h"

#include <QByteArrayView>
#include <QString>

namespace quillon::old_format
{

struct DecodedText {
    QString text;
    bool isWhole = true; // else some bytes are no text
};

/// The bytes of a text as the format stores it.
DecodedText decoded(const Pages& pages, QByteArrayView bytes);

} // namespace quillon::old_format
