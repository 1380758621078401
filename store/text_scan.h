#pragma once

#include <QStringView>

#include <vector>

namespace quillon
{

/// How a long text is searched: with the vector instructions of this computer or without.
enum class ScanKernel { Plain, Sse2, Avx2, Neon };

/// The ways that this computer can go, the fastest first. `Plain` is always among them.
std::vector<ScanKernel> availableScanKernels();

/// The first place in [begin, end) where the units of `needle` (at least one) stand; `end` when there is none.
const char16_t* findUnits(ScanKernel kernel, const char16_t* begin, const char16_t* end, QStringView needle);

} // namespace quillon
