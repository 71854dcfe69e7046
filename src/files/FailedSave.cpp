#include "files/FailedSave.h"

#include "files/OutputFile.h"
#include "support/PlainTextBoxes.h"

#include <QMessageBox>

void tellFailedSave(const OutputFile& file)
{
    const PlainTextBoxes plain;
    QMessageBox::warning(
        nullptr, QStringLiteral("File not saved"),
        QStringLiteral("File: %1 could not be written.\n\n%2\n\nA file that was there before is unchanged.")
            .arg(file.path(), file.reason()),
        QMessageBox::Ok);
}
