#include "StandardTexts.h"

#include <QLibraryInfo>

namespace reelkeep {

StandardTexts::StandardTexts()
{
    // Loaded by name: the program's texts are Spanish in every locale.
    (void)load(QStringLiteral("qtbase_es"), QLibraryInfo::path(QLibraryInfo::TranslationsPath));
}

QString
StandardTexts::translate(const char* context, const char* sourceText, const char* disambiguation, int count) const
{
    QString standard = QTranslator::translate(context, sourceText, disambiguation, count);
    if (standard.isEmpty())
        return standard; // Null: another translator may know it.
    QString text = standard.normalized(QString::NormalizationForm_D);
    text.removeIf([](QChar character) { return character.category() == QChar::Mark_NonSpacing; });
    return text;
}

} // namespace reelkeep
