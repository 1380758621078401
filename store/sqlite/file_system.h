#pragma once

namespace quillon::sqlite
{

/// How a file is reached.
enum class Access {
    ToUse,    // read and written
    ToInspect // shown as it would be after its repair; whatever is written stays in memory
};

/// The name of SQLite's way to the files of the system ("VFS") for an access. In both of them a name that
/// platform::ShortPath has made is taken as it stands, and no journal leads to files of other databases.
const char* fileSystem(Access access);

} // namespace quillon::sqlite
