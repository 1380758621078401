#pragma once

class QApplication;

namespace quillon
{

/// Makes the interface Japanese whatever language the system speaks: the toolkit's own texts, the locale and fonts
/// that draw Han characters in their Japanese forms.
void setUpJapaneseInterface(QApplication& application);

} // namespace quillon
