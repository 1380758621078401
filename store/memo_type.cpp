#include "store/memo_type.h"

#include <QRegularExpression>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// Follows a statement word by word and knows where the type of a field stands.
class FieldTypes
{
public:
    /// Takes the next word, quoted text or other character of the statement; whether it is the type of a field.
    bool take(QStringView token)
    {
        const auto is = [token](QStringView word) { return token.compare(word, Qt::CaseInsensitive) == 0; };
        const Next next = std::exchange(m_next, Next::Anything);
        if (token == u"(")
            ++m_depth;
        else if (token == u")")
            --m_depth;
        else if (m_statement == Statement::Unknown && is(u"ALTER"))
            m_statement = Statement::AlterTable;
        else if (m_statement == Statement::Unknown && is(u"TABLE"))
            m_statement = Statement::CreateTable;
        else if (m_depth == 0 && is(u"AS"))
            m_statement = Statement::Other; // a query follows

        const bool announcedByList =
            m_statement == Statement::CreateTable && m_depth == 1 && (token == u"(" || token == u",");
        const bool announcedByAdding = m_statement == Statement::AlterTable && m_depth == 0 && is(u"ADD");
        const bool stillAnnounced =
            m_statement == Statement::AlterTable && next == Next::Name && is(u"COLUMN");
        if (announcedByList || announcedByAdding || stillAnnounced)
            m_next = Next::Name;
        else if (next == Next::Name && !is(u"CONSTRAINT"))
            m_next = Next::Type;
        return next == Next::Type;
    }

private:
    enum class Statement { Unknown, CreateTable, AlterTable, Other };
    enum class Next { Anything, Name, Type };

    Statement m_statement = Statement::Unknown;
    Next m_next = Next::Anything;
    int m_depth = 0;
};

} // namespace

QString withTextForMemo(const QString& definition)
{
    // Comments (to be passed over), quoted texts and names, words, and every other character by itself.
    static const QRegularExpression tokens(
        u"(?<comment>--[^\\n]*+|/\\*.*?\\*/)"
        u"|'(?:[^']++|'')*+'|\"(?:[^\"]++|\"\")*+\"|`(?:[^`]++|``)*+`|\\[[^\\]]*+\\]"
        u"|[\\w$\\x{80}-\\x{10FFFF}]++|\\S"_s,
        QRegularExpression::DotMatchesEverythingOption);
    FieldTypes types;
    QString result;
    qsizetype copied = 0;
    for (auto matches = tokens.globalMatch(definition); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        if (match.capturedLength(u"comment"_s) > 0)
            continue;
        const QStringView token = match.capturedView();
        if (types.take(token) && token.compare(u"MEMO", Qt::CaseInsensitive) == 0) {
            result += QStringView(definition).sliced(copied, match.capturedStart() - copied);
            result += u"TEXT";
            copied = match.capturedEnd();
        }
    }
    result += QStringView(definition).sliced(copied);
    return result;
}

} // namespace quillon
