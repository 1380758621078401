#include "app/shell/japanese_fonts.h"

#include <QApplication>
#include <QEvent>
#include <QFontMetrics>
#include <QScopedValueRollback>
#include <QStringList>

#include <clocale>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// Lets the toolkit take the texts for Japanese ones. A font of several languages draws each with its own forms, and
/// the language is asked of the process once, when the first text is laid out.
void layOutAsJapanese()
{
#ifdef Q_OS_UNIX
    const QByteArray before = std::setlocale(LC_CTYPE, nullptr);
    // Where Japanese is not installed no language will do: then the font has its own forms.
    if (std::setlocale(LC_CTYPE, "ja_JP.UTF-8") == nullptr && std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr)
        std::setlocale(LC_CTYPE, "C");
    static_cast<void>(QFontMetrics(QApplication::font()).horizontalAdvance(u"A"_s));
    std::setlocale(LC_CTYPE, before.constData());
#endif
}

} // namespace

QFont withJapaneseForms(const QFont& font)
{
    // The first family that is installed wins; the font's own ones stay for characters that it lacks.
    QStringList families{u"Noto Sans CJK JP"_s, u"Noto Sans JP"_s, u"Yu Gothic UI"_s, u"Meiryo UI"_s,
                         u"IPAexGothic"_s,      u"IPAPGothic"_s,   u"IPAGothic"_s,    u"Source Han Sans JP"_s,
                         u"VL PGothic"_s,       u"VL Gothic"_s,    u"TakaoPGothic"_s, u"TakaoGothic"_s,
                         u"Hiragino Sans"_s,    u"MS UI Gothic"_s, u"MS PGothic"_s};
    const auto own = font.families();
    for (const QString& family : own) {
        if (!families.contains(family))
            families << family;
    }
    QFont japanese = font;
    japanese.setFamilies(families);
    return japanese;
}

JapaneseFonts::JapaneseFonts(QObject* application) : QObject(application)
{
    apply();
    layOutAsJapanese();
    application->installEventFilter(this);
}

bool JapaneseFonts::eventFilter(QObject* receiver, QEvent* event)
{
    // A theme that changes brings fonts for menus, lists and the like, and tells nobody but the windows.
    const bool byApplication = event->type() == QEvent::ApplicationFontChange && receiver == parent();
    const bool byTheme = event->type() == QEvent::ThemeChange && receiver->isWindowType();
    if (byApplication || byTheme)
        apply();
    return QObject::eventFilter(receiver, event);
}

void JapaneseFonts::apply()
{
    if (m_isApplying)
        return;
    const QScopedValueRollback applying(m_isApplying, true);
    // The toolkit forgets the fonts of single kinds of controls then: there is one for all.
    QApplication::setFont(withJapaneseForms(QApplication::font()));
}

} // namespace quillon
