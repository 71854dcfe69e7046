#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>
#include <QtTest>

namespace {

QDir repository()
{
    return QDir(QStringLiteral(KORA_SOURCE_FOLDER));
}

/// Names of one line of code in a text, without the blocks of code.
QStringList backtickedNames(QString text)
{
    static const QRegularExpression block(QStringLiteral("^```.*?^```"),
                                          QRegularExpression::MultilineOption |
                                              QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression code(QStringLiteral("`([^`\\n]+)`"));
    text.remove(block);
    QStringList names;
    for (auto match = code.globalMatch(text); match.hasNext();)
        names.append(match.next().captured(1));
    return names;
}

/// Files that a text links or shows, relative to it.
QStringList linkedFiles(const QString& text)
{
    static const QRegularExpression link(QStringLiteral("\\]\\(([^)#\\s]+)[^)]*\\)"));
    QStringList files;
    for (auto match = link.globalMatch(text); match.hasNext();) {
        const QString target = match.next().captured(1);
        if (!target.contains(QLatin1Char(':')))
            files.append(target);
    }
    return files;
}

/// The path in the repository that a name in backticks means; empty for anything else: classes, calls, keys
/// of the settings, paths of the host and what a build makes.
QString repositoryPath(const QString& name)
{
    static const QRegularExpression shape(QStringLiteral("^(\\./)?[A-Za-z0-9_.*-]+(/[A-Za-z0-9_.*-]+)*/?$"));
    static const QRegularExpression source(
        QStringLiteral("\\.(h|cpp|ui|qrc|svg|png|xml|md|txt|cmake|sh|supp|desktop)$"));
    QString path = name.section(QLatin1Char(' '), 0, 0);
    if (!shape.match(path).hasMatch() || path.startsWith(QLatin1String("build/")))
        return QString();
    const bool fromHere = path.startsWith(QLatin1String("./"));
    if (fromHere)
        path.remove(0, 2);
    const bool belowAFolderOfOurs =
        path.contains(QLatin1Char('/')) && repository().exists(path.section(QLatin1Char('/'), 0, 0));
    if (fromHere || belowAFolderOfOurs || source.match(path).hasMatch())
        return path;
    return QString();
}

/// A path from the top; a bare file name may lie in any folder; a star stands for part of a name.
bool existsInRepository(const QString& path)
{
    const QString folder = path.contains(QLatin1Char('/')) ? path.section(QLatin1Char('/'), 0, -2) : QString();
    const QString file = path.section(QLatin1Char('/'), -1);
    if (file.contains(QLatin1Char('*')))
        return !QDir(repository().filePath(folder))
                    .entryList({file}, QDir::AllEntries | QDir::NoDotAndDotDot)
                    .isEmpty();
    if (repository().exists(path))
        return true;
    if (path.contains(QLatin1Char('/')))
        return false;
    for (const QString& top : repository().entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (top == QLatin1String("build"))
            continue;
        QDirIterator iterator(repository().filePath(top), {path}, QDir::Files, QDirIterator::Subdirectories);
        if (iterator.hasNext())
            return true;
    }
    return false;
}

QStringList documents()
{
    QStringList paths{QStringLiteral("README.md"), QStringLiteral("CONTRIBUTING.md")};
    for (const QString& name : QDir(repository().filePath(QStringLiteral("docs"))).entryList({QStringLiteral("*.md")}))
        paths.append(QStringLiteral("docs/") + name);
    return paths;
}

QString textOf(const QString& document)
{
    QFile file(repository().filePath(document));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

class DocumentPathsTest : public QObject
{
    Q_OBJECT

private slots:
    void everyPathThatADocumentNamesExists_data()
    {
        QTest::addColumn<QString>("document");
        for (const QString& document : documents())
            QTest::newRow(qPrintable(document)) << document;
    }
    void everyPathThatADocumentNamesExists()
    {
        QFETCH(QString, document);
        const QString text = textOf(document);
        QVERIFY2(!text.isEmpty(), "the document is missing or empty");
        QStringList missing;
        for (const QString& name : backtickedNames(text)) {
            const QString path = repositoryPath(name);
            if (!path.isEmpty() && !existsInRepository(path))
                missing.append(path);
        }
        const QDir folder = QFileInfo(repository().filePath(document)).dir();
        for (const QString& file : linkedFiles(text)) {
            if (!folder.exists(file))
                missing.append(file);
        }
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(QLatin1Char('\n'))));
    }

    void pathsAreToldFromOtherNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("path");
        QTest::newRow("file") << "src/app/Globals.h"
                              << "src/app/Globals.h";
        QTest::newRow("folder") << "src/logging"
                                << "src/logging";
        QTest::newRow("script with options") << "./run --seconds 10"
                                             << "run";
        QTest::newRow("script that is not there") << "./frobnicate"
                                                  << "frobnicate";
        QTest::newRow("folder that is not there") << "lib/Globals.h"
                                                  << "lib/Globals.h";
        QTest::newRow("bare file") << "CMakePresets.json"
                                   << "";
        QTest::newRow("bare source") << "MailboxComm.h"
                                     << "MailboxComm.h";
        QTest::newRow("class") << "MailboxComm"
                               << "";
        QTest::newRow("call") << "MailboxComm::refreshData()"
                              << "";
        QTest::newRow("key of the settings") << "PID_Ylf/Omin"
                                             << "";
        QTest::newRow("path of the host") << "/dev/kora_anvolt0"
                                          << "";
        QTest::newRow("result of a build") << "build/release/kora-local-ui"
                                           << "";
    }
    void pathsAreToldFromOtherNames()
    {
        QFETCH(QString, name);
        QTEST(repositoryPath(name), "path");
    }

    void missingPathsAreFound_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("there");
        QTest::newRow("file") << "src/app/Globals.h" << true;
        QTest::newRow("folder") << "src/logging/" << true;
        QTest::newRow("bare file") << "Globals.h" << true;
        QTest::newRow("star") << "resources/product_data/*.svg" << true;
        QTest::newRow("no such file") << "src/app/Global.h" << false;
        QTest::newRow("no such bare file") << "Global.h" << false;
        QTest::newRow("no such star") << "resources/product_data/*.gif" << false;
    }
    void missingPathsAreFound()
    {
        QFETCH(QString, path);
        QTEST(existsInRepository(path), "there");
    }

    void codeIsReadFromLinesNotFromBlocks()
    {
        const QString text = QStringLiteral("See `a/b.h` and `C`.\n```\ncd `x/y.h`\n```\nThen `d.md`.\n");
        QCOMPARE(backtickedNames(text),
                 QStringList({QStringLiteral("a/b.h"), QStringLiteral("C"), QStringLiteral("d.md")}));
    }

    void linksToOtherPlacesAreLeftAlone()
    {
        const QString text = QStringLiteral("![x](images/x.png) [y](https://example.org/y) [z](#part) [w](w.md#part)");
        QCOMPARE(linkedFiles(text), QStringList({QStringLiteral("images/x.png"), QStringLiteral("w.md")}));
    }
};

QTEST_APPLESS_MAIN(DocumentPathsTest)
#include "DocumentPathsTest.moc"
