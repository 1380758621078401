#include "exchange/notes.h"

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

std::vector<Note> Notes::take()
{
    if (m_beyond > 0)
        m_notes.push_back({.where = {}, .text = u"ほかに %1 件あります。"_s.arg(m_beyond)});
    m_beyond = 0;
    return std::exchange(m_notes, {});
}

} // namespace quillon::exchange
