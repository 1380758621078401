#include "app/base/platform/code_page.h"
#include "ui/data/text_fields.h"

#include <QTest>

#include <algorithm>
#include <random>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;

namespace
{

/// A field that counts how often its text is asked for.
class CountingArea : public TextArea
{
public:
    QString content() const override
    {
        ++asked;
        return TextArea::content();
    }
    mutable int asked = 0;
};

} // namespace

/// How long the text of a field of many lines is, key by key.
class TestTextArea : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keysAreCountedWithoutReadingTheWholeText()
    {
        CountingArea area;
        area.load(u"内容\r\n"_s.repeated(1000));
        area.asked = 0;
        QCOMPARE(area.byteLength(), 6000);
        area.moveCursor(QTextCursor::End);
        QTest::keyClick(&area, Qt::Key_A);
        QCOMPARE(area.byteLength(), 6001);
        QTest::keyClick(&area, Qt::Key_Return);
        QCOMPARE(area.byteLength(), 6003); // a line break as the loaded text has them
        area.undo();
        area.selectAll();
        QTest::keyClick(&area, Qt::Key_Delete);
        QCOMPARE(area.byteLength(), 0);
        QCOMPARE(area.asked, 0);
    }

    void replacedTextCanBeBroughtBackAndReplacedAgain()
    {
        const QString first = u"一\r\n二\u2028三\n"_s;
        const QString second = u"甲\n乙\r丙"_s;
        const QString third = u"子\r\n丑"_s;
        TextArea area;
        area.load(first);
        area.replace(second);
        QCOMPARE(area.content(), second);
        QCOMPARE(area.textCursor().position(), 0);
        area.replace(third);
        QCOMPARE(area.content(), third);
        for (int round = 0; round < 2; ++round) {
            area.undo();
            QCOMPARE(area.content(), second);
            area.undo();
            QCOMPARE(area.content(), first);
            QVERIFY(!area.document()->isUndoAvailable());
            area.redo();
            QCOMPARE(area.content(), second);
            area.redo();
            QCOMPARE(area.content(), third);
        }
    }

    void textThatIsBroughtBackKeepsItsLineBreaks_data()
    {
        QTest::addColumn<QString>("loaded");
        QTest::addColumn<QString>("replaced");
        QTest::addColumn<QString>("typed"); // at the beginning of the text that was brought back
        QTest::newRow("carriage returns") << u"一\r\n二"_s << u"甲\n乙"_s << u"x一\r\n二"_s;
        QTest::newRow("line feeds") << u"一\n二"_s << u"甲\r\n乙"_s << u"x一\n二"_s;
    }

    void textThatIsBroughtBackKeepsItsLineBreaks()
    {
        QFETCH(QString, loaded);
        QFETCH(QString, replaced);
        QFETCH(QString, typed);
        TextArea area;
        area.load(loaded);
        area.replace(replaced);
        area.undo();
        area.moveCursor(QTextCursor::Start);
        QTest::keyClicks(&area, u"x"_s);
        QCOMPARE(area.content(), typed);
        QCOMPARE(area.byteLength(), platform::byteLength932(typed));
        QTest::keyClicks(&area, u"yz"_s); // as many changes as the replacing was
        QTest::keyClick(&area, Qt::Key_Delete);
        QCOMPARE(area.content(), QString(typed).replace(u"x一"_s, u"xyz"_s));
        area.replace(QString());
        QCOMPARE(area.content(), QString());
        area.undo();
        QCOMPARE(area.content(), QString(typed).replace(u"x一"_s, u"xyz"_s));
    }

    void newDatumCannotBeUndone()
    {
        TextArea area;
        area.load(u"一"_s);
        area.replace(u"二"_s);
        area.load(u"三"_s);
        area.undo();
        QCOMPARE(area.content(), u"三"_s);
    }

    void countIsThatOfTheText_data()
    {
        QTest::addColumn<QString>("loaded");
        QTest::newRow("empty") << QString();
        QTest::newRow("line feeds") << u"水は液体。\nａbｃ\n\nｱｲｳ"_s;
        QTest::newRow("carriage returns and line feeds") << u"水\r\n氷\r\n"_s;
        QTest::newRow("mixed line breaks") << u"水\r\n氷\n雪\r霜"_s;
        QTest::newRow("odd characters") << u"水\u2028氷\u2029雪\u00A0霜\U0001F4A7"_s;
    }

    void countIsThatOfTheText()
    {
        QFETCH(QString, loaded);
        TextArea area;
        const auto counted = [&area] { return platform::byteLength932(area.content()); };
        area.load(loaded);
        QCOMPARE(area.byteLength(), counted());
        std::mt19937 random(5);
        const QStringList pieces = {u"a"_s, u"水"_s, u"水\n氷"_s, u"\n\n"_s, u"ｱ\U0001F4A7"_s, u""_s};
        for (int round = 0; round < 300; ++round) {
            QTextCursor cursor = area.textCursor();
            const auto place = [&] {
                return static_cast<int>(random() % static_cast<unsigned>(area.document()->characterCount()));
            };
            cursor.setPosition(place());
            if (random() % 2 == 0)
                cursor.setPosition(std::min(cursor.position() + 5, place()), QTextCursor::KeepAnchor);
            if (random() % 16 == 0)
                area.replace(round % 2 == 0 ? loaded : u"甲\r\n乙"_s);
            else if (random() % 4 == 0)
                area.undo();
            else if (random() % 8 == 0)
                area.redo();
            else
                cursor.insertText(pieces[static_cast<qsizetype>(random() % 6)]);
            QCOMPARE(area.byteLength(), counted());
        }
        area.load(loaded);
        QCOMPARE(area.byteLength(), counted());
        area.clear();
        QCOMPARE(area.byteLength(), 0);
    }
};

QTEST_MAIN(TestTextArea)
#include "test_text_area.moc"
