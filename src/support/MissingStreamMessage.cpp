#include "stream/MissingStream.h"

#include <QCoreApplication>
#include <QMessageBox>

void reportMissingStreamAndQuit()
{
    QMessageBox::critical(nullptr, QStringLiteral("Cannot open file"),
                          QStringLiteral("System file /dev/kora_dma_displ could not be opened.\n\n"
                                         "Please check if KORA driver is loaded.\n"
                                         "Application will now quit.\n"),
                          QMessageBox::Ok);
    QCoreApplication::quit();
}
