// What comes into a field of one line stays on one line.
#include "ui/widgets/one_line_input.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;

class TestOneLineInput : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QLineEdit> field;

    void paste(const QString& text) const
    {
        QGuiApplication::clipboard()->setText(text);
        QTest::keyClick(field.get(), Qt::Key_V, Qt::ControlModifier);
    }
    void undo() const { QTest::keyClick(field.get(), Qt::Key_Z, Qt::ControlModifier); }

private Q_SLOTS:
    void init()
    {
        field = std::make_unique<QLineEdit>();
        keepInputOnOneLine(*field);
        field->show();
    }
    void cleanup() { field.reset(); }

    void lineBreaksAndTabsBecomeOneBlankEach_data()
    {
        QTest::addColumn<QString>("pasted");
        QTest::addColumn<QString>("text");
        QTest::newRow("plain") << u"水 氷"_s << u"水 氷"_s;
        QTest::newRow("line feed") << u"水\n氷"_s << u"水 氷"_s;
        QTest::newRow("carriage return and line feed") << u"水\r\n氷\r\n"_s << u"水 氷 "_s;
        QTest::newRow("carriage return") << u"水\r氷"_s << u"水 氷"_s;
        QTest::newRow("tab") << u"水\t氷"_s << u"水 氷"_s;
        QTest::newRow("several") << u"\n\n水\t\t氷"_s << u"  水  氷"_s;
        QTest::newRow("separators") << u"水\u2028氷\u2029雪\u0085霜"_s << u"水 氷 雪 霜"_s;
    }

    void lineBreaksAndTabsBecomeOneBlankEach()
    {
        QFETCH(QString, pasted);
        paste(pasted);
        QTEST(field->text(), "text");
        QCOMPARE(field->cursorPosition(), field->text().size());
        undo();
        QCOMPARE(field->text(), QString());
    }

    void pastedTextReplacesTheSelectionAndCanBeTakenBack()
    {
        QTest::keyClicks(field.get(), u"aabb"_s);
        field->setSelection(1, 2);
        paste(u"a\nb"_s);
        QCOMPARE(field->text(), u"aa bb"_s);
        QCOMPARE(field->cursorPosition(), 4);
        for (int steps = 0; steps < 5 && field->text() != u"aabb"; ++steps) {
            undo();
            QVERIFY(!field->text().contains(u'\n'));
        }
        QCOMPARE(field->text(), u"aabb"_s);
    }

    void pastingInTheMiddleKeepsWhatStandsAround()
    {
        QTest::keyClicks(field.get(), u"  "_s);
        field->setCursorPosition(1);
        paste(u"\n"_s);
        QCOMPARE(field->text(), u"   "_s);
        QCOMPARE(field->cursorPosition(), 2);
    }

    void inputMethodBringsOneLine()
    {
        QInputMethodEvent commit;
        commit.setCommitString(u"水\n氷"_s);
        QCoreApplication::sendEvent(field.get(), &commit);
        QCOMPARE(field->text(), u"水 氷"_s);
    }

    void textOfTheProgramStaysAsItIs()
    {
        field->setText(u"水\n氷"_s);
        QCOMPARE(field->text(), u"水\n氷"_s);
        field->setCursorPosition(0);
        QTest::keyClicks(field.get(), u"x"_s);
        QCOMPARE(field->text(), u"x水\n氷"_s);
        paste(u"\t"_s);
        QCOMPARE(field->text(), u"x 水\n氷"_s);
    }
};

QTEST_MAIN(TestOneLineInput)
#include "test_one_line_input.moc"
