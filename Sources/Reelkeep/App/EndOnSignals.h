#pragma once

namespace reelkeep {

/// From now on, SIGTERM, SIGINT and SIGHUP end the program as closing its window does, however often they come, except
/// those that its starter made it ignore, as nohup does. Interface thread; once, when the application exists.
void endOnSignals();

} // namespace reelkeep
