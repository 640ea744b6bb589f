#include "panel/recipes/recipe_folder.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>

#include "panel/recipes/recipe_json.h"
#include "streams/file_replacement.h"
#include "streams/input_file.h"

namespace plc::panel {
namespace {

constexpr streams::InputFileKind kRecipeFile = {"a recipe", qint64(16) * 1024 * 1024, ""};
const QLatin1String kSuffix(".json");
/// With the suffix and what a file has behind its name while it is written, below the 255 bytes
/// that file systems take.
constexpr int kLongestFileName = 230;

bool staysAsItIs(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= '0' && byte <= '9') || byte == '-' || byte == '_';
}

/// Of letters, digits, '-', '_', and of all other bytes "%2F".
QString fileNameOf(const QString& name)
{
    QString encoded;
    const QByteArray bytes = name.toUtf8();
    for (const char byte : bytes) {
        if (staysAsItIs(byte))
            encoded += QLatin1Char(byte);
        else
            encoded +=
                QLatin1Char('%') + QString::fromLatin1(QByteArray(1, byte).toHex().toUpper());
    }
    return encoded;
}

QString nameOf(const QString& fileName)
{
    const QByteArray encoded = fileName.left(fileName.size() - kSuffix.size()).toLatin1();
    return QString::fromUtf8(QByteArray::fromPercentEncoding(encoded));
}

RecipeSummary summaryOf(const Expected<Recipe>& recipe, const QString& name)
{
    RecipeSummary summary;
    summary.name = name;
    if (!recipe) {
        summary.error = recipe.error().text;
        return summary;
    }
    summary.plc = recipe->plc;
    summary.savedAt = recipe->savedAt;
    summary.savedBy = recipe->savedBy;
    summary.values = int(recipe->entries.size());
    return summary;
}

} // namespace

QString RecipeFolder::fileOf(const QString& name) const
{
    return m_path + QLatin1Char('/') + fileNameOf(name) + kSuffix;
}

QVector<RecipeSummary> RecipeFolder::list() const
{
    QVector<RecipeSummary> found;
    const QStringList files = QDir(m_path).entryList(QDir::Files, QDir::Name);
    for (const QString& file : files) {
        // Others may lie there: temporary ones, or such as somebody has put there.
        if (!file.endsWith(kSuffix) || fileNameOf(nameOf(file)) + kSuffix != file)
            continue;
        found.append(summaryOf(load(nameOf(file)), nameOf(file)));
    }
    std::sort(found.begin(), found.end(), [](const RecipeSummary& a, const RecipeSummary& b) {
        const int order = a.name.compare(b.name, Qt::CaseInsensitive);
        return order != 0 ? order < 0 : a.name < b.name;
    });
    return found;
}

bool RecipeFolder::contains(const QString& name) const
{
    return recipeNameProblem(name).isEmpty() && QFileInfo::exists(fileOf(name));
}

Expected<Recipe> RecipeFolder::load(const QString& name) const
{
    const QString file = fileOf(name);
    const Expected<QByteArray> bytes = streams::readInputFile(file, kRecipeFile);
    if (!bytes)
        return bytes.error();
    Expected<Recipe> recipe = parseRecipe(*bytes, file);
    // A file that was copied has another name than it says.
    if (recipe)
        recipe->name = name;
    return recipe;
}

Expected<void> RecipeFolder::save(const Recipe& recipe) const
{
    const QString problem = recipeNameProblem(recipe.name);
    if (!problem.isEmpty())
        return Error{problem};
    if (fileNameOf(recipe.name).size() > kLongestFileName)
        return Error{QStringLiteral("expected a shorter name")};
    const QDir folder(m_path);
    if (!contains(recipe.name) && folder.entryList(QDir::Files).size() >= kMostRecipes)
        return Error{QStringLiteral("%1: there are %2 recipes, which is as many as are kept; "
                                    "remove one")
                         .arg(m_path)
                         .arg(kMostRecipes)};
    if (!folder.mkpath(QStringLiteral(".")))
        return Error{QStringLiteral("%1: the folder cannot be made").arg(m_path)};
    streams::FileReplacement file(fileOf(recipe.name));
    if (const Expected<void> isOpen = file.open(); !isOpen)
        return isOpen.error();
    file.write(recipeJson(recipe));
    return file.commit();
}

Expected<void> RecipeFolder::remove(const QString& name) const
{
    QFile file(fileOf(name));
    if (file.remove())
        return {};
    return Error{
        QStringLiteral("%1: cannot be removed: %2").arg(file.fileName(), file.errorString())};
}

} // namespace plc::panel
