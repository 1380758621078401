#pragma once

namespace quillon
{

class Session;

namespace kept
{
struct Damage;
}

/// Where the person is told.
enum class ToldIn { TheProgram, TheRestoreWindow };

/// Tells the person that a database is damaged, which kept copy can take its place and how that is taken out.
void TellDamage(Session& session, const kept::Damage& damage, ToldIn where = ToldIn::TheProgram);

} // namespace quillon
