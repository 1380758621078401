#include "tests/faults/model.h"

#include <QList>

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace quillon::testing
{

namespace
{

Model::Pair ordered(const QString& a, const QString& b)
{
    return a < b ? Model::Pair(a, b) : Model::Pair(b, a);
}

QStringList rowsOf(sqlite3* file, const char* sql, int fields, QString& why)
{
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(file, sql, -1, &prepared, nullptr) != SQLITE_OK) {
        why = QString::fromUtf8(sqlite3_errmsg(file));
        return {};
    }
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(prepared, sqlite3_finalize);
    QStringList values;
    int code = SQLITE_ROW;
    while ((code = sqlite3_step(prepared)) == SQLITE_ROW) {
        for (int i = 0; i < fields; ++i)
            values << QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(prepared, i)));
    }
    if (code != SQLITE_DONE)
        why = QString::fromUtf8(sqlite3_errmsg(file));
    return values;
}

QString categoryOf(const Actor& actor, const QString& rest)
{
    return QChar(static_cast<char16_t>(u'A' + actor.number)) + rest;
}

bool isOf(const Actor& actor, const QString& identifier)
{
    // Data: the first digit of the number; categories: the first letter.
    if (identifier.size() == 12)
        return identifier[9] == QChar(static_cast<char16_t>(u'1' + actor.number));
    return identifier.startsWith(categoryOf(actor, {}));
}

std::size_t below(std::mt19937& random, std::size_t count)
{
    return count == 0 ? 0 : random() % count;
}

template <class Items> auto oneOf(std::mt19937& random, const Items& items)
{
    auto item = items.begin();
    std::advance(item, below(random, items.size()));
    return *item;
}

QStringList dataOf(const Actor& actor, const Model& model)
{
    QStringList identifiers;
    for (const auto& [identifier, datum] : model.data) {
        if (isOf(actor, identifier))
            identifiers << identifier;
    }
    return identifiers;
}

QStringList categoriesOf(const Actor& actor, const Model& model)
{
    QStringList identifiers;
    for (const auto& [identifier, name] : model.categories) {
        if (isOf(actor, identifier))
            identifiers << identifier;
    }
    return identifiers;
}

QString freeDatum(std::mt19937& random, const Model& model, const Actor& actor, QChar letter)
{
    for (;;) {
        const QString identifier =
            u"%1-991231-%2%3"_s.arg(letter).arg(actor.number + 1).arg(below(random, 100), 2, 10, QChar(u'0'));
        if (!model.data.contains(identifier))
            return identifier;
    }
}

QString someText(std::mt19937& random, std::size_t atMost)
{
    static const QString letters = u"水火木金土日月山川田abcABC0123 、。ｱｲｳ"_s;
    QString text;
    for (std::size_t i = 0, size = 1 + below(random, atMost); i < size; ++i)
        text += letters[static_cast<qsizetype>(below(random, static_cast<std::size_t>(letters.size())))];
    return text.trimmed().isEmpty() ? u"水"_s : text;
}

/// A document goes over several pages of the file now and then.
QString someContent(std::mt19937& random, QChar letter)
{
    if (letter == u'R' && below(random, 4) == 0)
        return someText(random, 12000);
    return someText(random, letter == u'R' ? 900 : 100);
}

void file(Model& model, const QString& category, const QString& datum)
{
    model.memberships.insert({category, datum});
    for (auto hyphen = category.indexOf(u'-'); hyphen >= 0; hyphen = category.indexOf(u'-', hyphen + 1))
        model.memberships.erase({category.first(hyphen), datum});
}

void removeDatum(Model& model, const QString& datum)
{
    model.data.erase(datum);
    std::erase_if(model.links, [&](const auto& link) { return link.first == datum || link.second == datum; });
    std::erase_if(model.memberships, [&](const auto& membership) { return membership.second == datum; });
}

/// Whether some of the data are filed in some of the categories, each as a whole: in the category and out of those above.
bool isFiledInPart(const QStringList& categories, const QStringList& data, const Model& before,
                   const Model& actual, const Model& whole)
{
    std::vector<Model::Pair> filings;
    for (const QString& category : categories) {
        for (const QString& datum : data)
            filings.emplace_back(category, datum);
    }
    for (std::size_t chosen = 0; chosen < (std::size_t{1} << filings.size()); ++chosen) {
        Model some = before;
        some.data = whole.data;
        for (std::size_t i = 0; i < filings.size(); ++i) {
            if ((chosen >> i & 1) != 0)
                file(some, filings[i].first, filings[i].second);
        }
        if (actual == some)
            return true;
    }
    return false;
}

constexpr std::size_t MostData = 60; // of an actor

} // namespace

std::optional<Model> readModel(const QString& path, QString& why)
{
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(path.toUtf8().constData(), &opened, SQLITE_OPEN_READWRITE, "unix");
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> file(opened, sqlite3_close);
    if (code != SQLITE_OK) {
        why = QString::fromUtf8(sqlite3_errmsg(opened));
        return std::nullopt;
    }
    sqlite3_busy_timeout(opened, 1500);
    why.clear();
    const QStringList whole = rowsOf(opened, "PRAGMA integrity_check", 1, why);
    if (whole != QStringList(u"ok"_s)) {
        why += u" integrity_check: "_s + whole.join(u", "_s);
        return std::nullopt;
    }
    Model model;
    for (const char* sql :
         {"SELECT Object_ID, Name, Explanation FROM Main", "SELECT Object_ID, Name, Explanation FROM RefDoc",
          "SELECT Object_ID, Name, Explanation FROM RefFile"}) {
        const QStringList values = rowsOf(opened, sql, 3, why);
        for (qsizetype i = 0; i + 2 < values.size(); i += 3)
            model.data[values[i]] = {.name = values[i + 1], .content = values[i + 2]};
    }
    const auto pairs = [&](const char* sql, auto&& add) {
        const QStringList values = rowsOf(opened, sql, 2, why);
        for (qsizetype i = 0; i + 1 < values.size(); i += 2)
            add(values[i], values[i + 1]);
    };
    pairs("SELECT Link_Object_ID, Object_ID FROM Link",
          [&](const QString& a, const QString& b) { model.links.insert(ordered(a, b)); });
    pairs("SELECT Category_ID, Name FROM Category_ID",
          [&](const QString& identifier, const QString& name) { model.categories[identifier] = name; });
    pairs("SELECT Category_ID, Object_ID FROM Category", [&](const QString& category, const QString& datum) {
        model.memberships.insert({category, datum});
    });
    if (!why.isEmpty())
        return std::nullopt;
    return model;
}

QString difference(const Model& actual, const Model& expected)
{
    const auto firstOf = [](const auto& there, const auto& here, const QString& what, auto&& shown) {
        for (const auto& item : there) {
            if (std::find(here.begin(), here.end(), item) == here.end())
                return QString(what + u' ' + shown(item));
        }
        return QString();
    };
    const auto both = [&](const auto& a, const auto& b, const QString& what, auto&& shown) {
        const QString tooMuch = firstOf(a, b, u"not expected: "_s + what, shown);
        return tooMuch.isEmpty() ? firstOf(b, a, u"missing: "_s + what, shown) : tooMuch;
    };
    const auto pair = [](const auto& item) { return item.first + u' ' + item.second; };
    QString text = both(actual.data, expected.data, u"datum"_s, [](const auto& item) {
        return item.first + u' ' + item.second.name + u' ' + item.second.content.left(20);
    });
    if (text.isEmpty())
        text = both(actual.links, expected.links, u"link"_s, pair);
    if (text.isEmpty())
        text = both(actual.categories, expected.categories, u"category"_s, pair);
    if (text.isEmpty())
        text = both(actual.memberships, expected.memberships, u"membership"_s, pair);
    return text;
}

QString Step::described() const
{
    static const std::array names{"register",        "register file",
                                  "update",          "delete",
                                  "delete many",     "link",
                                  "unlink",          "file",
                                  "file many",       "unfile",
                                  "add category",    "rename category",
                                  "delete category", "register to link",
                                  "move down"};
    return QString::fromLatin1(names.at(static_cast<std::size_t>(kind))) + u' ' + identifier + u' ' + other +
           u' ' + many.join(u',');
}

std::optional<Step> randomStep(Step::Kind kind, std::mt19937& random, const Model& model, const Actor& actor)
{
    const QStringList data = dataOf(actor, model);
    const QStringList categories = categoriesOf(actor, model);
    const bool isFull = static_cast<std::size_t>(data.size()) >= MostData;
    Step step{.kind = kind, .identifier = {}, .other = {}, .name = {}, .content = {}, .many = {}};
    const auto someData = [&] {
        std::set<QString> chosen;
        for (std::size_t i = 0, count = 2 + below(random, 4); i < count; ++i)
            chosen.insert(oneOf(random, data));
        return QStringList(chosen.begin(), chosen.end());
    };
    switch (kind) {
    case Step::Kind::Register: {
        if (isFull)
            return std::nullopt;
        const QChar letter = below(random, 2) == 0 ? u'M' : u'R';
        step.identifier = freeDatum(random, model, actor, letter);
        step.name = someText(random, 20);
        step.content = someContent(random, letter);
        for (std::size_t i = 0, count = categories.isEmpty() ? 0 : below(random, 3); i < count; ++i) {
            const QString category = oneOf(random, categories);
            if (!step.many.contains(category))
                step.many << category;
        }
        return step;
    }
    case Step::Kind::RegisterFile:
        if (isFull)
            return std::nullopt;
        step.identifier = freeDatum(random, model, actor, u'F');
        step.name = sourceFile(actor.number * SourceFiles + static_cast<int>(below(random, SourceFiles)));
        step.content = u"未入力"_s;
        if (!categories.isEmpty() && below(random, 2) == 0)
            step.other = oneOf(random, categories);
        return step;
    case Step::Kind::Update: {
        QStringList texts;
        std::copy_if(data.begin(), data.end(), std::back_inserter(texts),
                     [](const QString& identifier) { return !identifier.startsWith(u'F'); });
        if (texts.isEmpty())
            return std::nullopt;
        step.identifier = oneOf(random, texts);
        step.name = someText(random, 20);
        step.content = someContent(random, step.identifier[0]);
        return step;
    }
    case Step::Kind::Delete:
        if (data.isEmpty())
            return std::nullopt;
        step.identifier = oneOf(random, data);
        return step;
    case Step::Kind::DeleteMany:
        if (data.size() < 3)
            return std::nullopt;
        step.many = someData();
        return step;
    case Step::Kind::Link: {
        if (data.size() < 2)
            return std::nullopt;
        step.identifier = oneOf(random, data);
        step.other = oneOf(random, data);
        return model.links.contains(ordered(step.identifier, step.other)) ? std::nullopt
                                                                          : std::optional(step);
    }
    case Step::Kind::Unlink: {
        std::vector<Model::Pair> links;
        std::copy_if(model.links.begin(), model.links.end(), std::back_inserter(links),
                     [&](const auto& link) { return isOf(actor, link.first); });
        if (links.empty())
            return std::nullopt;
        std::tie(step.identifier, step.other) = oneOf(random, links);
        return step;
    }
    case Step::Kind::File:
        if (data.isEmpty() || categories.isEmpty())
            return std::nullopt;
        step.identifier = oneOf(random, data);
        step.other = oneOf(random, categories);
        return step;
    case Step::Kind::FileMany:
        if (data.size() < 3 || categories.isEmpty())
            return std::nullopt;
        step.many = someData();
        step.other = oneOf(random, categories);
        return step;
    case Step::Kind::Unfile: {
        // The first of the category and those below it is left; so that it is known which, there is only one.
        std::vector<Model::Pair> single;
        for (const auto& membership : model.memberships) {
            const auto matches = [&](const auto& other) {
                return other.second == membership.second && other.first.startsWith(membership.first);
            };
            if (isOf(actor, membership.second) && model.categories.contains(membership.first) &&
                std::count_if(model.memberships.begin(), model.memberships.end(), matches) == 1)
                single.push_back(membership);
        }
        if (single.empty())
            return std::nullopt;
        std::tie(step.other, step.identifier) = oneOf(random, single);
        return step;
    }
    case Step::Kind::AddCategory: {
        const QString parent = categories.isEmpty() ? QString() : oneOf(random, categories);
        // The first of an actor stands at the top; its letter tells whose those below it are.
        step.other = parent;
        step.identifier = parent.isEmpty()
                              ? categoryOf(actor, {})
                              : parent + u'-' + QChar(static_cast<char16_t>(u'A' + below(random, 5)));
        step.name = someText(random, 30);
        if (step.identifier.size() > 11 || model.categories.contains(step.identifier))
            return std::nullopt;
        return step;
    }
    case Step::Kind::RenameCategory:
        if (categories.isEmpty())
            return std::nullopt;
        step.identifier = oneOf(random, categories);
        step.name = someText(random, 30);
        return step;
    case Step::Kind::DeleteCategory:
        if (categories.size() < 2)
            return std::nullopt;
        step.identifier = oneOf(random, categories);
        return step;
    case Step::Kind::RegisterToLink: {
        auto registration =
            data.isEmpty() ? std::nullopt : randomStep(Step::Kind::RegisterFile, random, model, actor);
        if (!registration)
            return std::nullopt;
        registration->kind = kind;
        registration->many = registration->other.isEmpty() ? QStringList() : QStringList(registration->other);
        registration->other = oneOf(random, data);
        return registration;
    }
    case Step::Kind::MoveDown: {
        std::vector<Model::Pair> moves;
        for (const auto& [category, datum] : model.memberships) {
            for (const QString& below : categories) {
                if (isOf(actor, datum) && below.startsWith(category + u'-'))
                    moves.emplace_back(below, datum);
            }
        }
        if (moves.empty())
            return std::nullopt;
        std::tie(step.other, step.identifier) = oneOf(random, moves);
        return step;
    }
    case Step::Kind::Count:
        break;
    }
    return std::nullopt;
}

Step randomStep(std::mt19937& random, const Model& model, const Actor& actor)
{
    // What adds comes more often than what takes away.
    static constexpr std::array kinds{
        Step::Kind::Register,       Step::Kind::Register,       Step::Kind::Register,
        Step::Kind::RegisterFile,   Step::Kind::Update,         Step::Kind::Update,
        Step::Kind::Delete,         Step::Kind::DeleteMany,     Step::Kind::Link,
        Step::Kind::Link,           Step::Kind::Unlink,         Step::Kind::File,
        Step::Kind::FileMany,       Step::Kind::Unfile,         Step::Kind::AddCategory,
        Step::Kind::AddCategory,    Step::Kind::RenameCategory, Step::Kind::DeleteCategory,
        Step::Kind::RegisterToLink, Step::Kind::MoveDown};
    for (;;) {
        if (auto step = randomStep(oneOf(random, kinds), random, model, actor))
            return *step;
    }
}

Model after(const Step& step, const Model& before)
{
    Model model = before;
    switch (step.kind) {
    case Step::Kind::Register:
        model.data[step.identifier] = {.name = step.name, .content = step.content};
        for (const QString& category : step.many)
            file(model, category, step.identifier);
        break;
    case Step::Kind::RegisterFile:
        model.data[step.identifier] = {.name = step.name, .content = step.content};
        // sic: a registration takes nothing out of the ancestors, for the file is new.
        if (!step.other.isEmpty())
            model.memberships.insert({step.other, step.identifier});
        break;
    case Step::Kind::Update:
        model.data[step.identifier] = {.name = step.name, .content = step.content};
        break;
    case Step::Kind::Delete:
        removeDatum(model, step.identifier);
        break;
    case Step::Kind::DeleteMany:
        for (const QString& datum : step.many)
            removeDatum(model, datum);
        break;
    case Step::Kind::Link:
        model.links.insert(ordered(step.identifier, step.other));
        break;
    case Step::Kind::Unlink:
        model.links.erase(ordered(step.identifier, step.other));
        break;
    case Step::Kind::RegisterToLink:
        model.data[step.identifier] = {.name = step.name, .content = step.content};
        for (const QString& category : step.many)
            model.memberships.insert({category, step.identifier});
        model.links.insert(ordered(step.identifier, step.other));
        break;
    case Step::Kind::File:
    case Step::Kind::MoveDown:
        file(model, step.other, step.identifier);
        break;
    case Step::Kind::FileMany:
        for (const QString& datum : step.many)
            file(model, step.other, datum);
        break;
    case Step::Kind::Unfile:
        model.memberships.erase({step.other, step.identifier});
        break;
    case Step::Kind::AddCategory:
    case Step::Kind::RenameCategory:
        model.categories[step.identifier] = step.name;
        break;
    case Step::Kind::DeleteCategory:
        model.categories.erase(step.identifier);
        std::erase_if(model.memberships,
                      [&](const auto& membership) { return membership.first == step.identifier; });
        break;
    case Step::Kind::Count:
        break;
    }
    return model;
}

bool isPossibleAfterFailure(const Step& step, const Model& before, const Model& actual)
{
    const Model whole = after(step, before);
    if (actual == before || actual == whole)
        return true;
    switch (step.kind) {
    case Step::Kind::DeleteMany:
        for (std::size_t chosen = 1; chosen < (std::size_t{1} << step.many.size()); ++chosen) {
            Model some = before;
            for (qsizetype i = 0; i < step.many.size(); ++i) {
                if ((chosen >> i & 1) != 0)
                    removeDatum(some, step.many[i]);
            }
            if (actual == some)
                return true;
        }
        return false;
    case Step::Kind::Register:
        return isFiledInPart(step.many, {step.identifier}, before, actual, whole);
    case Step::Kind::File:
        return isFiledInPart({step.other}, {step.identifier}, before, actual, whole);
    case Step::Kind::FileMany:
        return isFiledInPart({step.other}, step.many, before, actual, whole);
    default:
        return false;
    }
}

std::vector<Step> beginning(const Actor& actor)
{
    std::mt19937 random(static_cast<std::mt19937::result_type>(actor.number) + 1);
    std::vector<Step> steps;
    Model model;
    const auto add = [&](Step::Kind kind) {
        if (const auto step = randomStep(kind, random, model, actor)) {
            model = after(*step, model);
            steps.push_back(*step);
        }
    };
    for (int i = 0; i < 12; ++i)
        add(Step::Kind::AddCategory);
    for (int i = 0; i < 12; ++i)
        add(Step::Kind::Register);
    for (int i = 0; i < 3; ++i)
        add(Step::Kind::RegisterFile);
    for (int i = 0; i < 12; ++i) {
        add(Step::Kind::Link);
        add(Step::Kind::File);
    }
    return steps;
}

QString sourceFile(int number)
{
    return u"資料%1.txt"_s.arg(number);
}

} // namespace quillon::testing
