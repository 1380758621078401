#pragma once

#include <cstddef>

namespace quillon::sqlite
{

class Connection;

/// Many statements as one: read from one state of the file, or written altogether or not at all. It ends with the
/// block at the latest; its end never fails and leaves no lock.
class Transaction
{
public:
    enum class Purpose {
        /// To take the lock once for many small questions. Others cannot write meanwhile: not for longer than it takes
        /// to fill a list. Whoever writes in it makes a mistake (std::logic_error).
        Reading,
        /// To begin at once with the right to write; error 3260 when another program has it.
        Writing
    };

    /// Inside another transaction this is a part of that one: what a part has written is undone unless the part is
    /// committed, and durable when the whole is.
    explicit Transaction(Connection& connection, Purpose purpose = Purpose::Writing);
    /// Undoes what has been written since the beginning, unless it is committed.
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /// Makes everything since the beginning durable, or undoes it and fails. A failing or full disk has undone
    /// everything before: then this fails as the statement did that met with it.
    void commit();

private:
    enum class Role { Whole, Part, None };

    void end() noexcept;

    Connection& m_connection;
    Purpose m_purpose;
    Role m_role = Role::None;  // what there is to end
    std::size_t m_watched = 0; // of a part that is watched: where it began
};

} // namespace quillon::sqlite
