#pragma once

namespace reelkeep {

/// Registers the vocabulary's widgets with screen readers. Call once, before the first widget.
void installAccessibility();

} // namespace reelkeep
