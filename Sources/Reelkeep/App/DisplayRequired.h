#pragma once

namespace reelkeep {

/// While it lives, a display that the toolkit cannot open ends the program with a sentence on standard error and exit
/// status 1; the toolkit by itself would abort. Must exist while the QApplication is constructed. Messages of the
/// toolkit in that time are held back and written when this ends. Interface thread; one at a time.
class DisplayRequired {
public:
    DisplayRequired();
    ~DisplayRequired();
    DisplayRequired(const DisplayRequired&) = delete;
    DisplayRequired& operator=(const DisplayRequired&) = delete;
};

} // namespace reelkeep
