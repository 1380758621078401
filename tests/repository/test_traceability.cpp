#include "tests/support/compare_text.h"
#include "tools/traceability/source_reading.h"
#include "tools/traceability/traceability.h"

#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon::testing;
using namespace quillon::traceability;

namespace
{

/// The texts of a source that has nothing but a function with these lines.
QStringList textsIn(const QString& lines)
{
    QStringList texts;
    for (const Declaration& declaration : readSource(u"void f()\n{\n"_s + lines + u"\n}\n"_s).declarations)
        texts << declaration.texts;
    return texts;
}

/// "scope::name kind" of each declaration, in which the kind tells function, constant and slot.
QStringList declared(const QString& content)
{
    QStringList found;
    for (const Declaration& made : readSource(content).declarations)
        found << made.scope + u"::"_s + made.name + (made.function ? u" function"_s : QString()) +
                     (made.constant ? u" constant"_s : QString()) + (made.slot ? u" slot"_s : QString());
    return found;
}

/// The findings in a program of these files: paths and contents.
Findings findingsOf(const QList<std::pair<QString, QString>>& files)
{
    const QTemporaryDir folder;
    for (const auto& [path, content] : files) {
        QFile file(folder.filePath(path));
        if (!QDir(folder.path()).mkpath(path.section(u'/', 0, -2)) || !file.open(QIODevice::WriteOnly) ||
            file.write(content.toUtf8()) <= 0)
            return {};
    }
    return findingsIn(folder.path());
}

/// "text | files | tests" of each message.
QStringList told(const Findings& findings)
{
    QStringList lines;
    for (const Message& message : findings.messages)
        lines << message.text + u" | "_s + message.shownBy.join(u' ') + u" | "_s + message.heldBy.join(u' ');
    return lines;
}

} // namespace

/// How the list of behaviours and texts reads the sources.
class TestTraceability : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textsAreReadAsTheCompilerReadsThem_data()
    {
        QTest::addColumn<QString>("lines");
        QTest::addColumn<QStringList>("texts");
        const auto row = [](const char* name, const QString& lines, const QStringList& texts) {
            QTest::newRow(name) << lines << texts;
        };
        row("prefix and suffix", u"g(u\"a\"_s, \"b\", u8\"c\", \"d\"_ba);"_s,
            {u"a"_s, u"b"_s, u"c"_s, u"d"_s});
        row("adjacent", u"g(u\"a\"\n   u\"b\"_s \"c\");"_s, {u"abc"_s});
        row("adjacent around a comment", u"g(u\"a\" // \"x\"\n  /* \"y\" */ u\"b\"_s);"_s, {u"ab"_s});
        row("line end and quote", u"g(\"a\\r\\nb \\\"c\\\" \\\\n\");"_s, {u"a\r\nb \"c\" \\n"_s});
        row("numbered characters", u"g(\"\\x41\" \"\\u6c34\\0\\101\");"_s, {u"A水\0A"_s});
        row("raw", u"g(R\"(a \"b\" \\n)\", uR\"-(c)\" // d)-\"_s);"_s, {u"a \"b\" \\n"_s, u"c)\" // d"_s});
        row("macro", u"g(QStringLiteral(\"a\"));"_s, {u"a"_s});
        row("comments", u"// \"a\"\n/* g(\"b\"); */ g(\"c\"); // it's \"d\""_s, {u"c"_s});
        row("no comment in a text", u"g(\"http://a\", \"/* b */\");"_s, {u"http://a"_s, u"/* b */"_s});
        row("characters", u"g('\"', u'\\'', 1'000, \"a\");"_s, {u"a"_s});
        row("preprocessor", u"#define A \"b\" \\\n  \"c\"\ng(\"d\");"_s, {u"d"_s});
        row("empty", u"g(\"\", \"a\");"_s, {QString(), u"a"_s});
    }

    void textsAreReadAsTheCompilerReadsThem()
    {
        QFETCH(QString, lines);
        QFETCH(QStringList, texts);
        QCOMPARE(textsIn(lines), texts);
    }

    void summandsAreHoles_data()
    {
        QTest::addColumn<QString>("lines");
        QTest::addColumn<QString>("texts");
        QTest::newRow("in the middle") << u"g(u\"<\"_s + name + u\"> 水\"_s);"_s << u"<…> 水"_s;
        QTest::newRow("in front") << u"g(f(a, b) + \"水\");"_s << u"…水"_s;
        QTest::newRow("at the end") << u"x = \"水\" + a[1] + f(b);"_s << u"水…"_s;
        QTest::newRow("place holder") << u"g(u\"水 %1 火\"_s.arg(n));"_s << u"水 … 火"_s;
        QTest::newRow("text in a summand") << u"g(\"水\" + f(\"火\") + \"土\");"_s << u"水…土|火"_s;
        QTest::newRow("choice") << u"g(a ? \"水\" : \"火\" + b);"_s << u"水|火…"_s;
        QTest::newRow("list") << u"g({\"水\", \"火\"}, \"土\");"_s << u"水|火|土"_s;
        QTest::newRow("stream") << u"s << \"水\" << a + b;"_s << u"水"_s;
        QTest::newRow("macro") << u"g(QStringLiteral(\"水\") + a + QStringLiteral(\"火\"));"_s << u"水…火"_s;
    }

    void summandsAreHoles()
    {
        QFETCH(QString, lines);
        QFETCH(QString, texts);
        QVERIFY(compareText(textsIn(lines).join(u'|').replace(Hole, u'…'), texts));
    }

    void declarationsAreFoundWithTheirScope()
    {
        QCOMPARE(declared(u"#include <x>\n"
                          "using namespace a;\n"
                          "namespace a::titles\n{\n"
                          "inline const QString Name = u\"水\"_s;\n"
                          "enum class Kind { One, Two };\n"
                          "const Box Asked{.text = \"火\"};\n"
                          "struct Pair { int first = 1; };\n"
                          "template <typename T = int> T twice(T t) { return {t, t}; }\n"
                          "}\n"
                          "Pair::Pair() : a(1), b{2} { g(); }\n"
                          "int last() { if (x) { y(); } return 1; }\n"
                          "// the end\n"_s),
                 QStringList({u"titles::Name constant"_s, u"titles::Kind"_s, u"titles::Asked constant"_s,
                              u"Pair::first"_s, u"titles::twice function"_s, u"::Pair function"_s,
                              u"::last function"_s}));
    }

    void slotsAreFoundInTheirOrder()
    {
        QCOMPARE(declared(u"class Tests : public QObject\n{\n"
                          "    Q_OBJECT\n"
                          "private Q_SLOTS:\n"
                          "    void second() { g({1}); }\n"
                          "    void first();\n"
                          "private:\n"
                          "    void helper() {}\n"
                          "};\n"
                          "void Tests::first() { g(); }\n"_s),
                 QStringList({u"QObject::second function slot"_s, u"QObject::first function slot"_s,
                              u"QObject::helper function"_s, u"::first function"_s}));
    }

    void namesAreKeptWithTheirScopes()
    {
        const Source source =
            readSource(u"#include \"a/b.h\"\nvoid f() { g(titles::Name, {.text = c}); }\n"_s);
        QCOMPARE(source.includes, QStringList(u"a/b.h"_s));
        const QStringList& words = source.declarations.front().words;
        QVERIFY(words.contains(u"Name"_s) && words.contains(u"titles::Name"_s) && words.contains(u"c"_s));
        QVERIFY(!words.contains(u"text"_s)); // a field that is set, not a name that is used
    }

    void messageIsHeldAsAWhole_data()
    {
        QTest::addColumn<QString>("message"); // … is a hole
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("held");
        QTest::newRow("itself") << u"水を飲む。"_s << u"水を飲む。"_s << true;
        QTest::newRow("in a row of cells") << u"水"_s << u"A|水|火"_s << true;
        QTest::newRow("part of a word") << u"水"_s << u"水素"_s << false;
        QTest::newRow("end of a word") << u"素"_s << u"水素"_s << false;
        QTest::newRow("caption without its key") << u"水"_s << u"水(&W)"_s << false;
        QTest::newRow("end of a caption") << u"水(&W)"_s << u"温水(&W)"_s << false;
        QTest::newRow("values") << u"<…> と <…> を混ぜる。"_s << u"<水> と <火> を混ぜる。"_s << true;
        QTest::newRow("holes of the test") << u"<…> を混ぜる。"_s << u"<…> を混ぜる。"_s << true;
        QTest::newRow("other order") << u"水…火"_s << u"火…水"_s << false;
        QTest::newRow("one piece missing") << u"<…> と <…> を混ぜる。"_s << u"<水> を混ぜる。"_s << false;
        QTest::newRow("value before a word") << u"…水"_s << u"冷水"_s << true;
        QTest::newRow("open end") << u"水 - "_s << u"温水 - 火"_s << true;
    }

    void messageIsHeldAsAWhole()
    {
        QFETCH(QString, message);
        QFETCH(QString, text);
        QFETCH(bool, held);
        QCOMPARE(holds(text.replace(u'…', Hole), message.replace(u'…', Hole)), held);
    }

    void namesBecomeSentences_data()
    {
        QTest::addColumn<QString>("sentence");
        QTest::newRow("cancelKeepsTheRow") << u"Cancel keeps the row"_s;
        QTest::newRow("aRowOfACategory") << u"A row of a category"_s;
        QTest::newRow("staysFor29TicksAndEndsAtThe30th") << u"Stays for 29 ticks and ends at the 30th"_s;
        QTest::newRow("theIDIsShown") << u"The ID is shown"_s;
        QTest::newRow("openingByOK") << u"Opening by OK"_s;
    }

    void namesBecomeSentences()
    {
        QFETCH(QString, sentence);
        QCOMPARE(sentenceOf(QString::fromUtf8(QTest::currentDataTag())), sentence);
    }

    void constantsAndHelpersCountForWhoeverNamesThem()
    {
        const Findings findings = findingsOf({
            {u"app/base/titles.h"_s, u"namespace titles { inline const QString Water = u\"水の箱\"_s; }\n"_s},
            {u"ui/main/window.cpp"_s,
             u"void f() { box(titles::Water, u\"火の箱\"_s, u\"土: \"_s + x); }\n"_s},
            {u"core/same.cpp"_s, u"void f() { box(u\"火の箱\"_s); box(u\"無い箱\"_s); }\n"_s},
            {u"tests/main/fixture.h"_s, u"inline void expectWater() { expect(u\"水の箱\"_s); }\n"_s},
            {u"tests/main/test_window.cpp"_s, u"#include \"tests/main/fixture.h\"\n"
                                              "const QString Fire = u\"火の箱\"_s;\n"
                                              "/// The window.\n"
                                              "class TestWindow : public QObject\n{\n"
                                              "private Q_SLOTS:\n"
                                              "    void init() {}\n"
                                              "    void waterIsTold() { expectWater(); }\n"
                                              "    void fireIsTold_data()\n    {\n"
                                              "        QTest::addColumn<QString>(\"text\");\n"
                                              "        QTest::newRow(\"fire\") << Fire;\n    }\n"
                                              "    void fireIsTold()\n    {\n"
                                              "        QFETCH(QString, text);\n"
                                              "        expect(text);\n"
                                              "        expect(u\"土: 石\"_s);\n    }\n"
                                              "};\n"_s},
        });
        QCOMPARE(findings.subjects.size(), 1U);
        QCOMPARE(findings.subjects[0].comment, u"The window."_s);
        QCOMPARE(findings.subjects[0].behaviours, QStringList({u"waterIsTold"_s, u"fireIsTold"_s}));
        const QString fire = u"main/test_window: fireIsTold"_s;
        QCOMPARE(told(findings),
                 QStringList({u"水の箱 | ui/main/window.cpp | main/test_window: waterIsTold"_s,
                              u"火の箱 | core/same.cpp ui/main/window.cpp | "_s + fire,
                              u"無い箱 | core/same.cpp | "_s,
                              u"土: "_s + Hole + u" | ui/main/window.cpp | "_s + fire}));
        QCOMPARE(untestedMessages(findings), u"無い箱  core/same.cpp\n"_s);
    }

    void testIsNamedOnlyWhereItAsserts_data()
    {
        QTest::addColumn<QString>("helpers");
        QTest::addColumn<QString>("body");
        QTest::addColumn<bool>("asserts");
        const QString table = u"struct Entry { QString name; std::function<void()> expect; };\n"
                              "std::vector<Entry> table()\n{\n"
                              "    const auto tells = [](const QString& name, const QString& text) {\n"
                              "        return Entry{name, [text] { expect(text); }};\n    };\n"
                              "    return {tells(u\"a\"_s, u\"水の箱\"_s)};\n}\n"
                              "QStringList namesOf(const std::vector<Entry>& entries)\n{\n"
                              "    QStringList names;\n"
                              "    for (const Entry& entry : entries)\n        names << entry.name;\n"
                              "    return names;\n}\n"_s;
        const auto row = [](const char* name, const QString& helpers, const QString& body, bool asserts) {
            QTest::newRow(name) << helpers << body << asserts;
        };
        row("mentioned", {}, u"write(u\"水の箱\"_s);"_s, false);
        row("compared", {}, u"QCOMPARE(a, u\"水の箱\"_s);"_s, true);
        row("local name", {}, u"const QString b = u\"水の箱\"_s; QVERIFY(compareText(a, b));"_s, true);
        row("local name that only writes", {}, u"const QString b = u\"水の箱\"_s; write(b); QVERIFY(a);"_s,
            false);
        row("searched", {}, u"QVERIFY(any_of(l, [](auto t) { return t == u\"水の箱\"_s; }));"_s, true);
        row("helper that asserts", u"void told(const QString& t) { QCOMPARE(box(), t); }\n"_s,
            u"told(u\"水の箱\"_s);"_s, true);
        row("helper that does not", u"void told(const QString& t) { write(t); QVERIFY(true); }\n"_s,
            u"told(u\"水の箱\"_s);"_s, false);
        row("helper with a value of its own",
            u"void told(int n, const QString& t = u\"水の箱\"_s) { QCOMPARE(box(n), t); }\n"_s, u"told(1);"_s,
            true);
        row("helper that gets another value",
            u"void told(int n, const QString& t = u\"水の箱\"_s) { QCOMPARE(box(n), t); }\n"_s,
            u"told(1, u\"火の箱\"_s);"_s, false);
        row("helper that calls itself",
            u"void told(int n) { if (n > 0) told(n - 1); expect(u\"水の箱\"_s); }\n"_s, u"told(1);"_s, true);
        row("lambda that calls itself", {}, u"f = [&](int n) { f(n - 1); expect(u\"水の箱\"_s); }; f(2);"_s,
            true);
        row("table that is gone through", table, u"QCOMPARE(namesOf(table()), QStringList());"_s, false);
        row("table that is filled",
            u"std::vector<Entry> table()\n{\n    std::vector<Entry> all;\n"
            "    all.push_back({u\"a\"_s, [] { expect(u\"水の箱\"_s); }});\n    return all;\n}\n"_s,
            u"QVERIFY(!table().empty());"_s, false);
        row("table that is run", table, u"for (const Entry& entry : table()) entry.expect();"_s, true);
        row("member", {}, u"const Box b{.text = u\"水の箱\"_s, .title = t}; QCOMPARE(a, b.text);"_s, true);
        row("other member", {}, u"const Box b{.text = u\"水の箱\"_s, .title = t}; QCOMPARE(a, b.title);"_s,
            false);
    }

    void testIsNamedOnlyWhereItAsserts()
    {
        QFETCH(QString, helpers);
        QFETCH(QString, body);
        QFETCH(bool, asserts);
        const Findings findings = findingsOf({
            {u"core/a.cpp"_s, u"void f() { box(u\"水の箱\"_s); }\n"_s},
            {u"tests/core/test_a.cpp"_s, helpers +
                                             u"class TestA : public QObject\n{\n"
                                             "private Q_SLOTS:\n"
                                             "    void water()\n    {\n"_s +
                                             body + u"\n    }\n};\n"_s},
        });
        QCOMPARE(findings.messages.size(), 1U);
        QCOMPARE(findings.messages[0].heldBy, asserts ? QStringList(u"core/test_a: water"_s) : QStringList());
    }

    void messageMayBeNamedInPieces()
    {
        const Findings findings = findingsOf({
            {u"core/a.cpp"_s,
             u"void f() { box(u\"困る\\r\\nPLACE : Here\\r\\n\"_s + x, u\"水\\r\\n\\r\\n火\"_s); }\n"_s},
            {u"tests/core/test_a.cpp"_s,
             u"void told(QString at) { expect(u\"困る\\r\\nPLACE : \" + at + u\"\\r\\n\"); }\n"
             "class TestA : public QObject\n{\n"
             "private Q_SLOTS:\n"
             "    void here() { told(u\"Here\"_s); }\n"
             "    void elsewhere() { told(u\"Elsewhere\"_s); }\n"
             "    void bothLines() { expect({u\"水\"_s, QString(), u\"火\"_s}); }\n"
             "    void oneLine() { expect({u\"水\"_s}); }\n"
             "};\n"_s},
        });
        QCOMPARE(findings.messages.size(), 2U);
        QCOMPARE(findings.messages[0].heldBy, QStringList(u"core/test_a: here"_s));
        QCOMPARE(findings.messages[1].heldBy, QStringList(u"core/test_a: bothLines"_s));
    }

    void documentNamesTheFirstTestsOnly()
    {
        Message message{u"水|火\r\n"_s + Hole, {u"core/a.cpp"_s}, {}};
        for (int i = 1; i <= 7; ++i)
            message.heldBy << u"core/test_a: t%1"_s.arg(i);
        const QString document = documentOf(
            {{{u"tests/core/test_link_list.cpp"_s, u"Links."_s, {u"cancelKeepsTheRow"_s}}}, {message}});
        QVERIFY2(document.contains(u"## `tests/core/`\n\n### Link list (`test_link_list.cpp`)\n\nLinks.\n\n"
                                   "| Behaviour | Test |\n|---|---|\n"
                                   "| Cancel keeps the row | `cancelKeepsTheRow` |\n"_s),
                 qPrintable(document));
        QVERIFY2(
            document.endsWith(u"| `水\\|火⏎…` | `core/a.cpp` | `core/test_a: t1`, `core/test_a: t2`, "
                              "`core/test_a: t3`, `core/test_a: t4`, `core/test_a: t5`, `core/test_a: t6`, "
                              "and more |\n"_s),
            qPrintable(document));
    }
};

QTEST_GUILESS_MAIN(TestTraceability)
#include "test_traceability.moc"
