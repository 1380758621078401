#pragma once

namespace quillon
{
class RecordSet;
}

namespace quillon::exchange
{

/// Looks at the file when a write is over: one that a full disk has ended is undone only when somebody looks, and would
/// take the room until then. To be made before the transaction.
class SettledFile
{
public:
    /// `rows`: of that file; they outlive this.
    explicit SettledFile(const RecordSet& rows) : m_rows(rows) {}
    ~SettledFile();
    SettledFile(const SettledFile&) = delete;
    SettledFile& operator=(const SettledFile&) = delete;

private:
    const RecordSet& m_rows;
};

} // namespace quillon::exchange
