#pragma once

#include "tests/data/form_world.h"

#include <optional>

namespace quillon::testing
{

/// In what the windows of a definition and of a document differ, for the tests that both must pass.
struct Twin {
    QString kind;  // the letter of its identifiers
    QString first; // the identifiers that the first two data get
    QString second;
    QString name;       // of the first datum in the tests of links and categories
    QString kindWord;   // in lists
    QString department; // the title of its boxes
    QString windowName;
    QString title; // as designed
    QString designedMode;
    QString shownCaption;  // before the name of the datum shown
    QString label;         // of the content
    double room = 0;       // of the empty content, in full-width characters, as it is counted down
    int limit = 0;         // full-width characters of the content that are too many for saving
    int longest = 0;       // characters of a content that the table holds
    QString modeOnFailure; // when a failure of filing is told after a registration
    bool updateFiles = false;
    std::optional<MessageBox> registered = {}; // the notice, if there is one
    MessageBox updated = {};
    MessageBox contentTooLong = {};
};

inline const Twin DefinitionTwin{
    .kind = QStringLiteral("M"),
    .first = Water,
    .second = Ice,
    .name = QStringLiteral("水"),
    .kindWord = QStringLiteral("定義"),
    .department = QStringLiteral("Quillon 定義データ管理部"),
    .windowName = QStringLiteral("frmMainData"),
    .title = QStringLiteral("定義データ画面"),
    .designedMode = QStringLiteral("表示モード"),
    .shownCaption = QStringLiteral("定義画面 - "),
    .label = QStringLiteral("定義"),
    .room = 127,
    .limit = 127,
    .longest = 255,
    .modeOnFailure = QStringLiteral("登録モード"),
    .updateFiles = true,
    .registered = MessageBox{.text = QStringLiteral("本データを登録しました。")},
    .updated = {.text = QStringLiteral("本データを更新しました。"), .title = QStringLiteral("定義")},
    .contentTooLong = {.text =
                           QStringLiteral("定義が最大入力値を超えています。最大入力値は全角127文字です。"),
                       .title = QStringLiteral("Quillon システム監査部")}};

inline const Twin DocumentTwin{
    .kind = QStringLiteral("R"),
    .first = Book,
    .second = Paper,
    .name = QStringLiteral("本"),
    .kindWord = QStringLiteral("文献"),
    .department = QStringLiteral("Quillon 文献データ管理部"),
    .windowName = QStringLiteral("frmRefDoc"),
    .title = QStringLiteral("文献データ画面"),
    .designedMode = QStringLiteral("ステータス"),
    .shownCaption = QStringLiteral("文献画面-"),
    .label = QStringLiteral("文献"),
    .room = 32768,
    .limit = 32000,
    .longest = 100'000,
    .modeOnFailure = QStringLiteral("表示モード"),
    .updateFiles = false,
    .registered = std::nullopt,
    .updated = {.text = QStringLiteral("本データを更新しました。"),
                .title = QStringLiteral("Quillon 文献データ管理部")},
    // sic: a document's content is called a definition here.
    .contentTooLong = {.text =
                           QStringLiteral("定義が最大入力値を超えています。最大入力値は全角32000文字です。"),
                       .title = QStringLiteral("Quillon システム監査部")}};

/// What a window that was edited asks before it closes.
inline const MessageBox AskUpdate{.text = QStringLiteral("現在のデータを更新しますか。"),
                                  .buttons = Buttons::YesNoCancel};
inline const MessageBox AskRegister{.text = QStringLiteral("現在のデータを登録しますか。"),
                                    .buttons = Buttons::YesNoCancel};

/// What tests of the windows of definitions and of documents have in common. A test with the rows of `bothKinds` runs
/// for each of them.
class TwinFixture : public QObject
{
protected:
    static void bothKinds()
    {
        QTest::addColumn<QString>("identifier");
        QTest::newRow("definition") << Water;
        QTest::newRow("document") << Book;
    }
    /// The window for which the present row of test data stands; its column "identifier" tells.
    static const Twin& twin()
    {
        QFETCH(QString, identifier);
        return identifier == Water ? DefinitionTwin : DocumentTwin;
    }
    /// A name for a row of test data.
    static QByteArray tag(const QString& identifier, const QString& rest)
    {
        const QString kind =
            identifier == Water ? QStringLiteral("definition, ") : QStringLiteral("document, ");
        return (kind + rest).toUtf8();
    }

    void makeWorld() { world = std::make_unique<FormWorld>(); }
    /// Fails the test when a box has come that nobody expected, or has not come.
    void endWorld()
    {
        QCOMPARE(world->takeComplaints(), QStringList());
        world.reset();
    }

    /// A window that nothing has been done with.
    DataForm& newWindow() const
    {
        return dynamic_cast<DataForm&>(world->registry.newDataWindow(twin().kind));
    }
    DataForm& beginRegistration() const { return world->registrationOf<DataForm>(twin().kind); }
    /// Adds the first datum of the kind and shows it.
    DataForm& show(const QString& name = QStringLiteral("水"),
                   const QString& content = QStringLiteral("液体")) const
    {
        world->add(name, twin().first, content);
        return world->show<DataForm>(twin().first);
    }
    static void fill(DataForm& form, const QString& name, const QString& content)
    {
        FormWorld::enter(FormWorld::name(form), name);
        FormWorld::enter(FormWorld::definition(form), content);
    }
    void expectRegistered() const
    {
        if (twin().registered)
            world->dialogs.expect(*twin().registered);
    }

    /// The table of the kind, each row as its fields joined by "|".
    QStringList data() const { return TestWorld::rowsOf(world->tableOf(twin().first)); }
    /// The first datum of the kind as a row of `data`.
    static QString firstDatum(const QString& name, const QString& content)
    {
        return name + u'|' + twin().first + u'|' + content;
    }
    /// A membership of the first datum as a row of the table.
    static QString membership(const QString& category) { return category + u'|' + twin().first; }

    std::unique_ptr<FormWorld> world;
};

} // namespace quillon::testing
