#pragma once

#include <QFont>
#include <QObject>

namespace quillon
{

/// The font with the families in front that draw Han characters in their Japanese forms.
QFont withJapaneseForms(const QFont& font);

/// Keeps the fonts of the application Japanese, whatever the desktop or its theme set while it runs. Lives as long as the
/// application.
class JapaneseFonts : public QObject
{
    Q_OBJECT

public:
    explicit JapaneseFonts(QObject* application);

    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    void apply();

    bool m_isApplying = false;
};

} // namespace quillon
