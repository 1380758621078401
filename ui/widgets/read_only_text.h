#pragma once

#include <QPlainTextEdit>

namespace quillon
{

/// From now on assistive technology can read and select in fields that are read-only, but not change them, which the
/// toolkit would let it do. A field has to be read-only before anybody asks for it.
void keepReadOnlyFieldsFromOutside();

/// A text of many lines that is only shown. The toolkit asks for such a field while it is being made, when it is not
/// read-only yet: a class of its own is asked for again.
class ShownText : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit ShownText(QWidget* parent = nullptr);
};

} // namespace quillon
