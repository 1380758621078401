#include "exchange/settled_file.h"

#include "store/record_set.h"

namespace quillon::exchange
{

SettledFile::~SettledFile()
{
    try {
        static_cast<void>(m_rows.hasRows());
    } catch (const Error&) {
        return; // whoever opens the file next looks at it
    }
}

} // namespace quillon::exchange
