#pragma once

#include "tools/traceability/calls.h"
#include "tools/traceability/source_reading.h"

#include <QHash>
#include <QMultiHash>
#include <QSet>

#include <deque>
#include <map>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

namespace quillon::traceability
{

/// What the functions, constants and other declarations are that a file can name.
using Named = QMultiHash<QString, const Declaration*>;

/// Follows a test through its helpers and tells what it asserts: the texts in the arguments of its assertions, and in
/// the constants, local names, columns of test data and values of functions that these arguments name. What stands in
/// a lambda counts when the lambda runs, and not when a table that holds it is only gone through.
class Assertions
{
public:
    explicit Assertions(const Named& named) : m_named(named) {}

    QSet<QString> textsOf(const QString& test);

private:
    struct Environment;
    /// Tokens, and what the local names in them stand for.
    struct Value {
        Tokens tokens;
        const Environment* where = nullptr;
    };
    struct Environment {
        QHash<QString, std::vector<Value>> names;
    };
    enum class Lambdas { Run, Wait };
    using Seen = std::set<std::pair<const Token*, QString>>;

    /// What happens when the tokens are executed. Lambdas that are arguments of a call run with it.
    void run(Tokens tokens, const Environment& where, Lambdas lambdas);
    void runLambda(const Lambda& lambda, const Environment& where);
    void call(Tokens tokens, std::size_t at, Tokens arguments, const Environment& where);
    void callFunction(const Declaration& function, const std::vector<Value>& arguments);
    bool reachesAssertion(const Declaration& declaration);
    /// Runs the lambdas that a value is, or is made of.
    void runLambdas(const Value& value, Seen& seen);
    void runIfLambda(const Value& value, Seen& seen);

    /// Counts the texts of a value; of its members only the one called `member`, when it is told by name.
    void assertTexts(const Value& value, const QString& member);
    /// Counts the texts of the calls and members in it, and returns the tokens that say something themselves.
    std::vector<Token> assertParts(const Value& value, const QString& member);
    void assertNamed(const QString& name, const Environment& where, const QString& member);
    /// Whether what a call makes of its arguments can be read in the tests.
    bool isFollowed(const QString& name, const Environment& where) const;
    /// Counts what a followed call makes of its arguments.
    void assertCall(const QString& name, Tokens arguments, const Environment& where, const QString& member);

    static std::vector<Value> valuesOf(Tokens arguments, const Environment& where);
    Environment& makeEnvironment() { return m_environments.emplace_back(); }
    /// The local names of a function that is called with these arguments.
    const Environment& environmentOf(const Declaration& declaration, const std::vector<Value>& arguments);
    /// Notes what flows into the local names of some tokens.
    static void collectNames(Tokens tokens, Environment& into);
    static void note(const QString& name, Tokens value, Environment& into);
    static void collectLoop(Tokens loop, Environment& into);
    static void collectArguments(Tokens tokens, const QString& lambda, Tokens parameters, Environment& into);
    /// Notes the columns of test data that a function makes.
    void collectColumns(const Declaration& data, Environment& into);
    void collectRows(Tokens tokens, const Environment& where, QStringList& columns, Environment& into);

    const Named& m_named;
    std::deque<Environment> m_environments;
    using Places = std::vector<std::pair<const Token*, const Environment*>>;
    std::map<std::pair<const Declaration*, Places>, const Environment*> m_environmentsOf;
    std::map<const Declaration*, bool> m_reaching;
    std::set<const Declaration*> m_running;
    std::set<const Declaration*> m_asserting;
    std::set<std::pair<const Token*, const Environment*>> m_runningLambdas;
    // Of one test:
    std::set<const Environment*> m_run; // the calls
    std::set<std::tuple<const Token*, const Environment*, QString>> m_seen;
    QSet<QString> m_texts;
};

} // namespace quillon::traceability
