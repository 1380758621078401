#include "tools/traceability/assertions.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::traceability
{

namespace
{

bool isAssertion(const QString& name)
{
    static const QStringList beginnings = {u"QCOMPARE"_s, u"QVERIFY"_s, u"QTRY_"_s, u"QTEST"_s};
    return name == u"expect" || std::any_of(beginnings.begin(), beginnings.end(),
                                            [&](const QString& begin) { return name.startsWith(begin); });
}

/// Whether a member of a list puts something into it.
bool isAdding(const QString& name)
{
    static const QStringList adding = {u"push_back"_s, u"append"_s, u"insert"_s, u"emplace_back"_s};
    return adding.contains(name);
}

/// The member that is read of what ends before a place; empty when none is.
QString memberTakenAt(Tokens tokens, std::size_t at)
{
    const bool taken = isMemberAccess(tokens, at) && isWord(tokens, at + 1) && !isSign(tokens, at + 2, u"(");
    return taken ? tokens[at + 1].text : QString();
}

/// Whether the brackets of a loop have a colon.
bool isLoopOverValues(Tokens loop)
{
    return nextOf(loop, 0, {u":"_s}) + 1 < loop.size();
}

/// Keeps the brackets around a token: for each, whether it has the arguments of an algorithm.
void noteBracket(Tokens tokens, std::size_t at, std::vector<bool>& searching)
{
    if (step(tokens[at]) > 0)
        searching.push_back(isSign(tokens, at, u"(") && at > 0 && tokens[at - 1].isWord() &&
                            tokens[at - 1].text[0].isLower());
    else if (step(tokens[at]) < 0 && !searching.empty())
        searching.pop_back();
}

} // namespace

QSet<QString> Assertions::textsOf(const QString& test)
{
    m_texts.clear();
    m_seen.clear();
    m_run.clear();
    const auto declarations = m_named.values(test);
    for (const Declaration* declaration : declarations) {
        const Function function = functionOf(*declaration);
        if (!declaration->function || function.body.empty())
            continue;
        Environment& where = makeEnvironment();
        const auto data = m_named.values(test + u"_data"_s);
        for (const Declaration* made : data)
            collectColumns(*made, where);
        collectNames(function.body, where);
        run(function.body, where, Lambdas::Wait);
    }
    return m_texts;
}

void Assertions::run(Tokens tokens, const Environment& where, Lambdas lambdas)
{
    for (std::size_t at = 0; at < tokens.size();) {
        if (const Lambda lambda = lambdaAt(tokens, at); lambda.end > 0) {
            if (lambdas == Lambdas::Run)
                runLambda(lambda, where);
            at = lambda.end;
        } else if (const std::size_t open = tokens[at].isWord() ? argumentsOf(tokens, at) : 0; open > 0) {
            const Tokens arguments = insideBrackets(tokens, open);
            call(tokens, at, arguments, where);
            run(arguments, where, Lambdas::Run);
            at = behindBrackets(tokens, open);
        } else if (step(tokens[at]) > 0) {
            run(insideBrackets(tokens, at), where, Lambdas::Wait);
            at = behindBrackets(tokens, at);
        } else {
            ++at;
        }
    }
}

void Assertions::runLambda(const Lambda& lambda, const Environment& where)
{
    const auto place = std::pair(lambda.body.data(), &where);
    if (!m_runningLambdas.insert(place).second)
        return; // it calls itself
    run(lambda.body, where, Lambdas::Wait);
    m_runningLambdas.erase(place);
}

void Assertions::call(Tokens tokens, std::size_t at, Tokens arguments, const Environment& where)
{
    const QString& name = tokens[at].text;
    Seen seen;
    // What is called may be a member of a value that holds lambdas.
    if (at > 1 && isMemberAccess(tokens, at - 1) && tokens[at - 2].isWord() && !isAdding(name)) {
        const auto holders = where.names.value(tokens[at - 2].text);
        for (const Value& holder : holders)
            runLambdas(holder, seen);
    }
    if (isAssertion(name)) {
        assertTexts({arguments, &where}, {});
        // The column of test data is told by its name.
        if (name == u"QTEST" && !arguments.empty() && arguments.back().isText())
            assertNamed(arguments.back().text, where, {});
        return;
    }
    if (const auto values = where.names.find(name); values != where.names.end()) {
        for (const Value& value : *values)
            runIfLambda(value, seen);
        return;
    }
    const std::vector<Value> given = valuesOf(arguments, where);
    const auto functions = m_named.values(name);
    for (const Declaration* function : functions)
        callFunction(*function, given);
}

void Assertions::callFunction(const Declaration& function, const std::vector<Value>& arguments)
{
    // Most functions of a test assert nothing, nor does what they call, unless it is given to them.
    const auto mayRun = [](const Value& argument) {
        return argument.tokens.size() == 1 ||
               std::any_of(argument.tokens.begin(), argument.tokens.end(),
                           [](const Token& token) { return token.isSign(u"["); });
    };
    if (!reachesAssertion(function) && std::none_of(arguments.begin(), arguments.end(), mayRun))
        return;
    const Function read = functionOf(function);
    if (read.body.empty() || m_running.contains(&function))
        return;
    const Environment& where = environmentOf(function, arguments);
    if (!m_run.insert(&where).second)
        return;
    m_running.insert(&function);
    run(read.body, where, Lambdas::Wait);
    m_running.erase(&function);
}

bool Assertions::reachesAssertion(const Declaration& declaration)
{
    if (const auto known = m_reaching.find(&declaration); known != m_reaching.end())
        return known->second;
    std::vector<const Declaration*> waiting{&declaration};
    std::set<const Declaration*> seen{&declaration};
    bool found = false;
    while (!found && !waiting.empty()) {
        const Declaration* next = waiting.back();
        waiting.pop_back();
        found = std::any_of(next->words.begin(), next->words.end(), isAssertion);
        for (const QString& word : next->words) {
            for (auto at = m_named.constFind(word); at != m_named.cend() && at.key() == word; ++at) {
                if (seen.insert(at.value()).second)
                    waiting.push_back(at.value());
            }
        }
    }
    return m_reaching[&declaration] = found;
}

void Assertions::runIfLambda(const Value& value, Seen& seen)
{
    if (value.tokens.empty() || !seen.insert({value.tokens.data(), u"()"_s}).second)
        return;
    if (const Lambda lambda = lambdaAt(value.tokens, 0); lambda.end > 0)
        return runLambda(lambda, *value.where);
    if (value.tokens.size() > 1 || !value.tokens[0].isWord())
        return;
    const auto values = value.where->names.value(value.tokens[0].text);
    for (const Value& other : values)
        runIfLambda(other, seen);
}

void Assertions::runLambdas(const Value& value, Seen& seen)
{
    if (value.tokens.empty() || !seen.insert({value.tokens.data(), u"{}"_s}).second)
        return;
    for (std::size_t at = 0; at < value.tokens.size(); ++at) {
        if (const Lambda lambda = lambdaAt(value.tokens, at); lambda.end > 0)
            runLambda(lambda, *value.where);
        if (!value.tokens[at].isWord())
            continue;
        const QString& name = value.tokens[at].text;
        const auto values = value.where->names.value(name);
        for (const Value& other : values)
            runLambdas(other, seen);
        const auto declarations = values.empty() ? m_named.values(name) : QList<const Declaration*>();
        for (const Declaration* declaration : declarations)
            runLambdas({declaration->tokens, &environmentOf(*declaration, {})}, seen);
    }
}

void Assertions::assertTexts(const Value& value, const QString& member)
{
    if (value.tokens.empty() || !m_seen.insert({value.tokens.data(), value.where, member}).second)
        return;
    const std::vector<Token> tokens = assertParts(value, member);
    for (const QString& text : quillon::traceability::textsOf(tokens))
        m_texts << text;
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        const bool isMember = at > 0 && isMemberAccess(tokens, at - 1);
        if (!tokens[at].isWord() || (isMember && !isSign(tokens, at + 1, u"(")))
            continue; // a member belongs to what stands before it
        std::size_t next = at + 1;
        while (isSign(tokens, next, u"(") || isSign(tokens, next, u"["))
            next = behindBrackets(tokens, next);
        const QString taken = memberTakenAt(tokens, next);
        assertNamed(tokens[at].text, *value.where, taken.isEmpty() ? member : taken);
    }
}

std::vector<Token> Assertions::assertParts(const Value& value, const QString& member)
{
    const Tokens all = value.tokens;
    std::vector<Token> tokens;
    std::vector<bool> searching; // for each bracket around: whether it has the arguments of an algorithm
    for (std::size_t at = 0; at < all.size();) {
        const Lambda lambda = lambdaAt(all, at);
        const std::size_t open = all[at].isWord() ? argumentsOf(all, at) : 0;
        if (lambda.end > 0 && (searching.empty() || !searching.back())) {
            at = lambda.end;
        } else if (isSign(all, at, u".") && isWord(all, at + 1) && isSign(all, at + 2, u"=") &&
                   !member.isEmpty()) {
            const std::size_t end = nextOf(all, at + 3, {u","_s, u";"_s});
            if (all[at + 1].text == member)
                assertTexts({all.subspan(at + 3, end - at - 3), value.where}, {});
            at = end;
        } else if (open > 0 && all[at].isWord(u"for") && isLoopOverValues(insideBrackets(all, open))) {
            at = behindBrackets(all, open); // what is taken of each value tells what counts
        } else if (open > 0 && isFollowed(all[at].text, *value.where)) {
            const std::size_t end = behindBrackets(all, open);
            const QString taken = memberTakenAt(all, end);
            assertCall(all[at].text, insideBrackets(all, open), *value.where,
                       taken.isEmpty() ? member : taken);
            tokens.push_back({Token::Kind::Sign, u"()"_s});
            at = end;
        } else {
            noteBracket(all, at, searching);
            tokens.push_back(all[at++]);
        }
    }
    return tokens;
}

bool Assertions::isFollowed(const QString& name, const Environment& where) const
{
    const auto hasBody = [](const Declaration* declaration) {
        return declaration->function && !functionOf(*declaration).body.empty();
    };
    if (const auto values = where.names.find(name); values != where.names.end())
        return std::all_of(values->begin(), values->end(),
                           [](const Value& value) { return lambdaAt(value.tokens, 0).end > 0; });
    const auto declarations = m_named.values(name);
    return !declarations.empty() && std::all_of(declarations.begin(), declarations.end(), hasBody);
}

void Assertions::assertCall(const QString& name, Tokens arguments, const Environment& where,
                            const QString& member)
{
    if (const auto values = where.names.find(name); values != where.names.end()) {
        // Its arguments are known to its names, see `collectArguments`.
        for (const Value& value : *values)
            assertTexts({lambdaAt(value.tokens, 0).body, value.where}, member);
        return;
    }
    const std::vector<Value> given = valuesOf(arguments, where);
    const auto declarations = m_named.values(name);
    for (const Declaration* declaration : declarations) {
        if (!m_asserting.insert(declaration).second)
            continue; // it calls itself
        assertTexts({functionOf(*declaration).body, &environmentOf(*declaration, given)}, member);
        m_asserting.erase(declaration);
    }
}

void Assertions::assertNamed(const QString& name, const Environment& where, const QString& member)
{
    if (const auto values = where.names.find(name); values != where.names.end()) {
        for (const Value& value : *values)
            assertTexts(value, member);
        return;
    }
    const auto declarations = m_named.values(name);
    for (const Declaration* declaration : declarations)
        assertTexts({declaration->tokens, &environmentOf(*declaration, {})}, member);
}

std::vector<Assertions::Value> Assertions::valuesOf(Tokens arguments, const Environment& where)
{
    std::vector<Value> values;
    for (const Tokens argument : splitAt(arguments, u","_s))
        values.push_back({argument, &where});
    return values;
}

const Assertions::Environment& Assertions::environmentOf(const Declaration& declaration,
                                                         const std::vector<Value>& arguments)
{
    Places places;
    places.reserve(arguments.size());
    for (const Value& argument : arguments)
        places.emplace_back(argument.tokens.data(), argument.where);
    const Environment*& known = m_environmentsOf[{&declaration, places}];
    if (known != nullptr)
        return *known;
    Environment& where = makeEnvironment();
    known = &where;
    if (!declaration.function)
        return where;
    const Function function = functionOf(declaration);
    const QStringList names = parameterNames(function.parameters);
    for (std::size_t i = 0; i < arguments.size() && static_cast<qsizetype>(i) < names.size(); ++i)
        where.names[names[static_cast<qsizetype>(i)]].push_back(arguments[i]);
    // Those that are not given have their values in the declaration.
    const std::vector<Tokens> parameters = splitAt(function.parameters, u","_s);
    for (std::size_t i = arguments.size(); i < parameters.size(); ++i)
        collectNames(parameters[i], where);
    collectNames(function.body, where);
    return where;
}

void Assertions::note(const QString& name, Tokens value, Environment& into)
{
    if (!value.empty())
        into.names[name].push_back({value, &into});
}

void Assertions::collectNames(Tokens tokens, Environment& into)
{
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        if (!tokens[at].isWord())
            continue;
        const QString& name = tokens[at].text;
        const bool isMember = at > 0 && isMemberAccess(tokens, at - 1);
        const bool isDeclared = at > 0 && (tokens[at - 1].isWord() || tokens[at - 1].isSign(u"&") ||
                                           tokens[at - 1].isSign(u"*") || tokens[at - 1].isSign(u">"));
        if (isSign(tokens, at + 1, u"=") && !isMember) {
            const std::size_t end = nextOf(tokens, at + 2, {u";"_s, u","_s});
            const Tokens value = tokens.subspan(at + 2, end - at - 2);
            note(name, value, into);
            if (const Lambda lambda = lambdaAt(value, 0); lambda.end > 0)
                collectArguments(tokens, name, lambda.parameters, into);
        } else if ((isSign(tokens, at + 1, u"{") || isSign(tokens, at + 1, u"(")) && isDeclared &&
                   !tokens[at - 1].isWord(u"return")) {
            note(name, insideBrackets(tokens, at + 1), into);
        } else if (isSign(tokens, at + 1, u"<<") || isSign(tokens, at + 1, u"+=")) {
            const std::size_t end = nextOf(tokens, at + 2, {u";"_s});
            note(name, tokens.subspan(at + 2, end - at - 2), into);
        } else if (isMemberAccess(tokens, at + 1) && isWord(tokens, at + 2) && isSign(tokens, at + 3, u"(")) {
            if (isAdding(tokens[at + 2].text))
                note(name, insideBrackets(tokens, at + 3), into);
        } else if (name == u"for" && isSign(tokens, at + 1, u"(")) {
            collectLoop(insideBrackets(tokens, at + 1), into);
        }
    }
}

void Assertions::collectLoop(Tokens loop, Environment& into)
{
    const std::size_t colon = nextOf(loop, 0, {u":"_s});
    if (colon == 0 || colon + 1 >= loop.size())
        return;
    const Tokens range = loop.subspan(colon + 1);
    // The last word before the colon, or those in brackets.
    std::size_t first = colon - 1;
    while (isSign(loop, colon - 1, u"]") && first > 0 && !loop[first].isSign(u"["))
        --first;
    for (std::size_t at = first; at < colon; ++at) {
        if (loop[at].isWord())
            note(loop[at].text, range, into);
    }
}

void Assertions::collectArguments(Tokens tokens, const QString& lambda, Tokens parameters, Environment& into)
{
    const QStringList names = parameterNames(parameters);
    for (std::size_t at = 0; at + 1 < tokens.size(); ++at) {
        if (!tokens[at].isWord(lambda) || !isSign(tokens, at + 1, u"("))
            continue;
        const std::vector<Tokens> arguments = splitAt(insideBrackets(tokens, at + 1), u","_s);
        for (std::size_t i = 0; i < arguments.size() && static_cast<qsizetype>(i) < names.size(); ++i)
            into.names[names[static_cast<qsizetype>(i)]].push_back({arguments[i], &into});
    }
}

void Assertions::collectColumns(const Declaration& data, Environment& into)
{
    QStringList columns;
    collectRows(functionOf(data).body, environmentOf(data, {}), columns, into);
}

void Assertions::collectRows(Tokens tokens, const Environment& where, QStringList& columns, Environment& into)
{
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        const std::size_t open = tokens[at].isWord() ? argumentsOf(tokens, at) : 0;
        if (open == 0)
            continue;
        const Tokens arguments = insideBrackets(tokens, open);
        const QString& name = tokens[at].text;
        if (name == u"addColumn" && !arguments.empty()) {
            columns << arguments[0].text;
        } else if (name == u"newRow" || name == u"addRow") {
            std::size_t next = behindBrackets(tokens, open);
            for (qsizetype column = 0; column < columns.size() && isSign(tokens, next, u"<<"); ++column) {
                const std::size_t end = nextOf(tokens, next + 1, {u"<<"_s, u";"_s, u","_s});
                into.names[columns[column]].push_back({tokens.subspan(next + 1, end - next - 1), &where});
                next = end;
            }
        } else {
            // Columns and rows that several functions have in common stand in one of their own.
            const auto functions = m_named.values(name);
            for (const Declaration* function : functions) {
                if (function->words.contains(u"addColumn"_s) || function->words.contains(u"newRow"_s))
                    collectRows(functionOf(*function).body,
                                environmentOf(*function, valuesOf(arguments, where)), columns, into);
            }
        }
    }
}

} // namespace quillon::traceability
