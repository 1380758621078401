#include "store/criteria.h"

#include "app/base/error.h"

#include <QStringView>

#include <utility>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// More comparisons than this are no question that anybody asks; without a limit they would exhaust the engine.
constexpr std::size_t MostComparisons = 2000;

struct Token {
    enum class Kind { Word, Text, Equals, End };
    Kind kind = Kind::End;
    QStringView text;

    bool isKeyword(QStringView keyword) const
    {
        return kind == Kind::Word && text.compare(keyword, Qt::CaseInsensitive) == 0;
    }
};

class Scanner
{
public:
    explicit Scanner(QStringView text) : m_rest(text) {}

    Token next()
    {
        m_rest = m_rest.trimmed();
        if (m_rest.isEmpty())
            return {};
        const QChar first = m_rest.front();
        if (first == u'=')
            return take(Token::Kind::Equals, 1);
        if (first == u'\'')
            return takeText();
        qsizetype length = 0;
        while (length < m_rest.size() && isWordCharacter(m_rest[length]))
            ++length;
        if (length == 0)
            throw Error(errors::CriteriaSyntax);
        return take(Token::Kind::Word, length);
    }

private:
    static bool isWordCharacter(QChar character) { return character.isLetterOrNumber() || character == u'_'; }

    Token take(Token::Kind kind, qsizetype length)
    {
        const Token token{kind, m_rest.first(length)};
        m_rest = m_rest.sliced(length);
        return token;
    }

    Token takeText()
    {
        const qsizetype end = m_rest.indexOf(u'\'', 1);
        if (end < 0)
            throw Error(errors::CriteriaSyntax);
        const Token token{Token::Kind::Text, m_rest.sliced(1, end - 1)};
        m_rest = m_rest.sliced(end + 1);
        return token;
    }

    QStringView m_rest;
};

using Tree = std::unique_ptr<Criteria>;

/// Joins the trees from `first` to `last` (not included) evenly, so that no chain grows deep however long it is.
Tree join(Criteria::Joint joint, std::vector<Tree>& trees, std::size_t first, std::size_t last)
{
    if (last - first == 1)
        return std::move(trees[first]);
    const std::size_t middle = first + (last - first) / 2;
    auto tree = std::make_unique<Criteria>();
    tree->node =
        Criteria::Junction{joint, join(joint, trees, first, middle), join(joint, trees, middle, last)};
    return tree;
}

Tree joinAll(Criteria::Joint joint, std::vector<Tree>&& trees)
{
    return join(joint, trees, 0, trees.size());
}

class Parser
{
public:
    Parser(QStringView text, const TableSchema& table) : m_scanner(text), m_table(table) { advance(); }

    Tree parse()
    {
        std::vector<Tree> alternatives;
        do {
            alternatives.push_back(parseConjunction());
        } while (accept(u"OR"));
        if (m_token.kind != Token::Kind::End)
            throw Error(errors::CriteriaSyntax);
        // A text that is no criteria at all says more about its mistake than a field nobody knows.
        if (m_unknownField)
            throw Error(errors::UnknownField);
        return joinAll(Criteria::Joint::Or, std::move(alternatives));
    }

private:
    void advance() { m_token = m_scanner.next(); }

    bool accept(QStringView keyword)
    {
        if (!m_token.isKeyword(keyword))
            return false;
        advance();
        return true;
    }

    Tree parseConjunction()
    {
        std::vector<Tree> comparisons;
        do {
            comparisons.push_back(parseComparison());
        } while (accept(u"AND"));
        return joinAll(Criteria::Joint::And, std::move(comparisons));
    }

    Tree parseComparison()
    {
        for (const auto* keyword : {u"AND", u"OR", u"LIKE"}) {
            if (m_token.isKeyword(keyword))
                throw Error(errors::CriteriaSyntax);
        }
        if (m_token.kind != Token::Kind::Word || ++m_comparisons > MostComparisons)
            throw Error(errors::CriteriaSyntax);
        Comparison comparison;
        comparison.field = m_table.fieldIndex(m_token.text);
        m_unknownField = m_unknownField || comparison.field < 0;
        advance();
        if (accept(u"LIKE"))
            comparison.kind = Comparison::Kind::Like;
        else if (m_token.kind == Token::Kind::Equals)
            advance();
        else
            throw Error(errors::CriteriaSyntax);
        if (m_token.kind != Token::Kind::Text)
            throw Error(errors::CriteriaSyntax);
        comparison.text = m_token.text.toString();
        advance();
        auto tree = std::make_unique<Criteria>();
        tree->node = std::move(comparison);
        return tree;
    }

    Scanner m_scanner;
    const TableSchema& m_table;
    Token m_token;
    std::size_t m_comparisons = 0;
    bool m_unknownField = false;
};

} // namespace

Criteria parseCriteria(const QString& text, const TableSchema& table)
{
    return std::move(*Parser(text, table).parse());
}

} // namespace quillon
