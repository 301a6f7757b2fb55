#pragma once

#include <QTranslator>

namespace reelkeep {

/// The toolkit's own texts in Spanish, and like all texts of the program without accents.
class StandardTexts : public QTranslator {
    Q_OBJECT

public:
    /// Without the toolkit's translations it is empty: texts then stay English.
    StandardTexts();

    QString
    translate(const char* context, const char* sourceText, const char* disambiguation, int count) const override;
};

} // namespace reelkeep
