#include "app/SourceTree.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

namespace {

/// Paths that a text takes by the expression's first group.
QStringList captures(const QString& text, const QRegularExpression& expression)
{
    QStringList found;
    for (auto match = expression.globalMatch(text); match.hasNext();)
        found.append(match.next().captured(1));
    return found;
}

bool isGenerated(const QString& included)
{
    return included.startsWith(QLatin1String("ui_")) || included.endsWith(QLatin1String(".moc"));
}

} // namespace

QString folderOf(const QString& path)
{
    return path.section(QLatin1Char('/'), 0, -2);
}

QString nameOf(const QString& path)
{
    return path.section(QLatin1Char('/'), -1).section(QLatin1Char('.'), 0, 0);
}

QString unitOf(const QString& path)
{
    return folderOf(path) + QLatin1Char('/') + nameOf(path);
}

QString inTree(const QString& path)
{
    return QStringLiteral(KORA_SOURCE_FOLDER "/") + path;
}

QString textOf(const QString& path)
{
    QFile file(inTree(path));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QStringList quotedIncludes(const QString& text)
{
    static const QRegularExpression include(QStringLiteral("^[ \\t]*#[ \\t]*include[ \\t]*\"([^\"]+)\""),
                                            QRegularExpression::MultilineOption);
    return captures(text, include);
}

QStringList promotedHeaders(const QString& form)
{
    static const QRegularExpression header(QStringLiteral("<header[^>]*>([^<]+)</header>"));
    return captures(form, header);
}

QStringList sourceFiles()
{
    QStringList files;
    for (const char* folder : {"src", "simulation"}) {
        QDirIterator iterator(inTree(QLatin1String(folder)), {QStringLiteral("*.h"), QStringLiteral("*.cpp")},
                              QDir::Files, QDirIterator::Subdirectories);
        while (iterator.hasNext())
            files.append(QDir(inTree(QString())).relativeFilePath(iterator.next()));
    }
    return files;
}

QString includedPath(const QString& included)
{
    return included.startsWith(QLatin1String("simulation/")) ? included : QLatin1String("src/") + included;
}

QStringList includedPaths(const QString& path)
{
    QStringList paths;
    for (const QString& included : quotedIncludes(textOf(path))) {
        if (!isGenerated(included))
            paths.append(includedPath(included));
    }
    return paths;
}
