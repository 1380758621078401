#pragma once

#include <QString>
#include <QStringView>

namespace quillon
{

/// `text` as a Japanese reader compares it: case, full and half width, hiragana and katakana become one form
/// (ＡＢＣ = abc, ｶﾞ = ガ = が). Small and voiced kana stay distinct.
/// The pairs on which code page 932 tables disagree (— ―, 〜 ～, ‖ ∥, − －, ¢ ￠, £ ￡, ¬ ￢) become one form too.
QString foldedText(QStringView text);

/// The same into memory that has room for as many units as `text`; how many there are.
qsizetype foldInto(QStringView text, char16_t* out);

/// The beginning of `text`, of `units` or a few more, that folds as it does within the whole; so does what follows it.
QStringView beginningThatFoldsAlone(QStringView text, qsizetype units);

} // namespace quillon
