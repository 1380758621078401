#include "app/base/platform/code_page.h"
#include "tests/data/form_world.h"
#include "ui/data/text_fields.h"

#include <QPushButton>

#include <algorithm>
#include <random>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox Warning{.text = u"名称が最大入力値を超えています。最大入力値は全角32768文字です。"_s,
                         .title = u"Quillon システム監査部"_s};

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

class TestDocumentKeys : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<FormWorld> world;

    frmRefDoc& begin() { return world->beginRegistration<frmRefDoc>(); }

private Q_SLOTS:
    void init() { world = std::make_unique<FormWorld>(); }

    void cleanup()
    {
        QCOMPARE(world->takeComplaints(), QStringList());
        world.reset();
    }

    void countIsMeasuredInFullWidthCharacters_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("count");
        QTest::newRow("empty name") << 0 << QString() << u"名称：残り全角25文字"_s;
        QTest::newRow("one half-width") << 0 << u"a"_s << u"名称：残り全角24.5文字"_s;
        QTest::newRow("too long") << 0 << QString(28, u'本') << u"名称：残り全角-3文字"_s;
        QTest::newRow("empty content") << 2 << QString() << u"文献：残り全角32768文字"_s;
        QTest::newRow("content") << 2 << u"内容a"_s << u"文献：残り全角32765.5文字"_s;
        QTest::newRow("a line break is one byte here") << 2 << u"内\n容"_s << u"文献：残り全角32765.5文字"_s;
        QTest::newRow("and two in a file of Windows") << 2 << u"内\r\n容"_s << u"文献：残り全角32765文字"_s;
        QTest::newRow("full") << 2 << QString(32768, u'内') << u"文献：残り全角0文字"_s;
        QTest::newRow("too long content") << 2 << QString(32771, u'内') << u"文献：残り全角-3文字"_s;
    }

    void countIsMeasuredInFullWidthCharacters()
    {
        QFETCH(int, index);
        QFETCH(QString, text);
        frmRefDoc& form = begin();
        form.setFieldText(index, text);
        form.ShowInputCount(static_cast<qint16>(index));
        QTEST(FormWorld::panel(form, 2), "count");
    }

    void otherFieldsHaveNoCount()
    {
        auto* form = new frmRefDoc(world->session, world->registry);
        for (const qint16 index : {1, 3, -1})
            form->ShowInputCount(index);
        QCOMPARE(FormWorld::panel(*form, 2), QString());
    }

    void countLagsOneKeyBehind()
    {
        frmRefDoc& form = begin();
        QPlainTextEdit& content = FormWorld::definition(form);
        QTest::keyClick(&content, Qt::Key_A);
        QCOMPARE(FormWorld::panel(form, 2), u"文献：残り全角32768文字"_s);
        QTest::keyClick(&content, Qt::Key_Return);
        QCOMPARE(FormWorld::panel(form, 2), u"文献：残り全角32767.5文字"_s);
        QTest::keyClick(&content, Qt::Key_Backspace);
        QCOMPARE(FormWorld::panel(form, 2), u"文献：残り全角32767文字"_s);
        QTest::keyClick(&content, Qt::Key_Left);
        QCOMPARE(FormWorld::panel(form, 2), u"文献：残り全角32767.5文字"_s);
    }

    void countFollowsTheFocus()
    {
        frmRefDoc& form = begin();
        form.setFieldText(0, u"本"_s);
        QFocusEvent event(QEvent::FocusIn);
        QCoreApplication::sendEvent(&FormWorld::definition(form), &event);
        QCOMPARE(FormWorld::panel(form, 2), u"文献：残り全角32768文字"_s);
        QCoreApplication::sendEvent(&FormWorld::name(form), &event);
        QCOMPARE(FormWorld::panel(form, 2), u"名称：残り全角24文字"_s);
        QCoreApplication::sendEvent(&FormWorld::identifier(form), &event);
        QCOMPARE(FormWorld::panel(form, 2), u"名称：残り全角24文字"_s);
    }

    void countFollowsAnInputMethodOneStepBehind()
    {
        frmRefDoc& form = begin();
        QPlainTextEdit& content = FormWorld::definition(form);
        compose(content, u"ないよう"_s);
        QCOMPARE(FormWorld::panel(form, 2), u"文献：残り全角32768文字"_s); // not yet text
        commit(content, u"内容"_s);
        QCOMPARE(FormWorld::panel(form, 2), u"文献：残り全角32768文字"_s);
        compose(content, u"あ"_s);
        QCOMPARE(FormWorld::panel(form, 2), u"文献：残り全角32766文字"_s);
        QCOMPARE(form.fieldText(2), u"内容"_s);
    }

    void everyKeyWarnsOfATextThatIsFull_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("key");
        QTest::newRow("letter in the content") << 2 << int(Qt::Key_A);
        QTest::newRow("Enter in the content") << 2 << int(Qt::Key_Return);
        QTest::newRow("Delete in the content") << 2 << int(Qt::Key_Delete);
        QTest::newRow("Backspace in the content") << 2 << int(Qt::Key_Backspace);
        QTest::newRow("cursor key in the content") << 2 << int(Qt::Key_Right);
        QTest::newRow("function key in the content") << 2 << int(Qt::Key_F5);
        QTest::newRow("Shift in the content") << 2 << int(Qt::Key_Shift);
        QTest::newRow("blank in the content") << 2 << int(Qt::Key_Space);
        QTest::newRow("letter in the name") << 0 << int(Qt::Key_A);
        QTest::newRow("Enter in the name") << 0 << int(Qt::Key_Return);
        QTest::newRow("cursor key in the identifier") << 1 << int(Qt::Key_Left);
    }

    void everyKeyWarnsOfATextThatIsFull()
    {
        QFETCH(int, index);
        QFETCH(int, key);
        frmRefDoc& form = begin();
        auto* field = form.findChild<QWidget*>(u"txtFields(%1)"_s.arg(index));
        const QString text(32768, u'内');
        form.setFieldText(index, text.chopped(1));
        QTest::keyClick(field, Qt::Key_F6); // one character less is silent
        form.setFieldText(index, text);
        world->dialogs.expect(Warning);
        world->dialogs.meanwhile([&] { QCOMPARE(form.fieldText(index), text); }); // before the key acts
        QTest::keyClick(field, static_cast<Qt::Key>(key));
    }

    void warningTakesNoKeyAway()
    {
        frmRefDoc& form = begin();
        const QString text(32768, u'内');
        form.setFieldText(2, text);
        world->dialogs.expect(Warning);
        QTest::keyClick(&FormWorld::definition(form), Qt::Key_Return);
        QCOMPARE(form.fieldText(2), u'\n' + text);
        world->dialogs.expect(Warning);
        QTest::keyClick(&FormWorld::definition(form), Qt::Key_Backspace);
        QCOMPARE(form.fieldText(2), text);
    }

    void escapeClosesWithoutAWarning_data()
    {
        QTest::addColumn<int>("index");
        QTest::newRow("name") << 0;
        QTest::newRow("identifier") << 1;
        QTest::newRow("content") << 2;
    }

    void escapeClosesWithoutAWarning()
    {
        QFETCH(int, index);
        world->add(u"本"_s, Book, QString(40'000, u'内'));
        const QPointer<frmRefDoc> form(&world->show<frmRefDoc>(Book));
        QTest::keyClick(form->findChild<QWidget*>(u"txtFields(%1)"_s.arg(index)), Qt::Key_Escape);
        FormWorld::processEvents();
        QVERIFY(form.isNull());
    }

    void escapeAsksAsEveryCloseAndCounts()
    {
        frmRefDoc& form = begin();
        FormWorld::enter(FormWorld::definition(form), u"内容"_s);
        world->dialogs.expect(
            MessageBox{.text = u"現在のデータを登録しますか。"_s, .buttons = Buttons::YesNoCancel},
            Answer::Cancel);
        QTest::keyClick(&FormWorld::definition(form), Qt::Key_Escape);
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 1);
        QCOMPARE(FormWorld::panel(form, 2), u"文献：残り全角32766文字"_s);
    }

    void escapeOutsideTheFieldsClosesNothing()
    {
        world->add(u"本"_s, Book, u"内容"_s);
        auto& form = world->show<frmRefDoc>(Book);
        for (const QString& place : {u"lsvLink"_s, u"lsvCategory"_s, u"cmdSize(0)"_s})
            QTest::keyClick(form.findChild<QWidget*>(place), Qt::Key_Escape);
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 1);
    }

    void escapeBelongsToACompositionFirst()
    {
        const QPointer<frmRefDoc> form(&begin());
        QPlainTextEdit& content = FormWorld::definition(*form);
        compose(content, u"ないよう"_s);
        QTest::keyClick(&content, Qt::Key_Escape);
        FormWorld::processEvents();
        QVERIFY(!form.isNull());
        QTest::keyClick(&content, Qt::Key_Escape);
        FormWorld::processEvents();
        QVERIFY(form.isNull());
    }

    void enterConfirmsACompositionBeforeItBreaksTheLine()
    {
        frmRefDoc& form = begin();
        QPlainTextEdit& content = FormWorld::definition(form);
        compose(content, u"ないよう"_s);
        QTest::keyClick(&content, Qt::Key_Return);
        commit(content, u"内容"_s); // what the input method does when it is told to
        QCOMPARE(form.fieldText(2), u"内容"_s);
        QTest::keyClick(&content, Qt::Key_Return);
        QCOMPARE(form.fieldText(2), u"内容\n"_s);
    }

    void keysOfACompositionWarnOfNothing()
    {
        frmRefDoc& form = begin();
        form.setFieldText(2, QString(32768, u'内'));
        compose(FormWorld::definition(form), u"あ"_s);
        QTest::keyClick(&FormWorld::definition(form), Qt::Key_Left);
        QCOMPARE(FormWorld::panel(form, 2), u"文献：残り全角0文字"_s);
    }

    void switchGoesThroughDefinitionsAndDocuments()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        world->add(u"本"_s, Book, u"内容"_s);
        auto& water = world->show(Water);
        auto& book = world->show<frmRefDoc>(Book);
        auto& file = world->beginRegistration<frmRefFileEntry>(); // is passed over
        auto& other = begin();
        QTRY_COMPARE(QApplication::activeWindow(), &other);
        QTest::keyRelease(&FormWorld::name(other), Qt::Key_F2);
        QTRY_COMPARE(QApplication::activeWindow(), &water);
        QTest::keyRelease(&FormWorld::definition(water), Qt::Key_F2);
        QTRY_COMPARE(QApplication::activeWindow(), &book);
        QTest::keyRelease(book.findChild<QWidget*>(u"cmdSize(1)"_s), Qt::Key_F2);
        QTRY_COMPARE(QApplication::activeWindow(), &other);
        QTest::keyRelease(FormWorld::list(other, u"lsvLink"_s).viewport(),
                          Qt::Key_F3); // another key does nothing
        FormWorld::processEvents();
        QCOMPARE(QApplication::activeWindow(), &other);
        QVERIFY(FormWorld::choose(other, u"mnuDataChange"_s));
        QTRY_COMPARE(QApplication::activeWindow(), &water);
        QTest::keyRelease(&file, Qt::Key_F2); // knows no switching
        FormWorld::processEvents();
        QCOMPARE(QApplication::activeWindow(), &water);
    }

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
            if (random() % 4 == 0)
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

QTEST_MAIN(TestDocumentKeys)
#include "test_document_keys.moc"
