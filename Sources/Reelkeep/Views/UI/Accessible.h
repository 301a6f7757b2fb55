#pragma once

namespace reelkeep {

/// Makes the vocabulary's widgets known to screen readers. Once, before the first widget.
void installAccessibility();

} // namespace reelkeep
