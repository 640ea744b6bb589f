#include "panel/recipes/recipe_folder.h"

#include <gtest/gtest.h>

#include <QtCore/QDir>

#include "tests/panel/recipes/model_plc.h"
#include "tests/support/file_test.h"

namespace plc::panel {
namespace {

class RecipeFolderTest : public plc::test::FileTest {
protected:
    Recipe recipe(const QString& name)
    {
        Recipe made = test::letters(2);
        made.name = name;
        return made;
    }
    void save(const QString& name)
    {
        EXPECT_TRUE(succeeds(folder.save(recipe(name)))) << error.toStdString();
    }
    std::string listed() const
    {
        std::string text;
        const QVector<RecipeSummary> list = folder.list();
        for (const RecipeSummary& summary : list)
            text += "[" + summary.name.toStdString() + (summary.error.isEmpty() ? "]" : "!]");
        return text;
    }

    RecipeFolder folder{path("recipes")};
    plc::test::TestFolder inside{path("recipes")};
};

TEST_F(RecipeFolderTest, KeepsRecipes)
{
    EXPECT_EQ("", listed()) << "the folder is not there yet";
    EXPECT_FALSE(folder.contains(QStringLiteral("Summer")));
    save(QStringLiteral("Winter"));
    save(QStringLiteral("Summer"));
    EXPECT_EQ("[Summer][Winter]", listed());
    EXPECT_TRUE(folder.contains(QStringLiteral("Summer")));
    const RecipeSummary summary = folder.list().first();
    EXPECT_EQ("press", summary.plc.toStdString());
    EXPECT_EQ(1000, summary.savedAt);
    EXPECT_EQ("anna", summary.savedBy.toStdString());
    EXPECT_EQ(2, summary.values);
    const Expected<Recipe> loaded = folder.load(QStringLiteral("Summer"));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(2, loaded->entries.size());
    EXPECT_TRUE(succeeds(folder.remove(QStringLiteral("Summer"))));
    EXPECT_EQ("[Winter]", listed());
    EXPECT_FALSE(succeeds(folder.remove(QStringLiteral("Summer"))));
}

TEST_F(RecipeFolderTest, NoNameLeadsOutOfTheFolder)
{
    const QStringList names = {
        QStringLiteral(".."),  QStringLiteral("../x"), QStringLiteral("/etc/x"),
        QStringLiteral("a/b"), QStringLiteral("."),    QStringLiteral("a.json"),
        QStringLiteral("%2F"), QString::fromUtf8("ä"), QStringLiteral("a\\b")};
    for (const QString& name : names)
        save(name);
    EXPECT_EQ(
        "%252F.json %2E%2E%2Fx.json %2E%2E.json %2E.json %2Fetc%2Fx.json %C3%A4.json "
        "a%2Ejson.json a%2Fb.json a%5Cb.json",
        inside.names());
    EXPECT_EQ("", FileTest::names()) << "beside the folder";
    EXPECT_EQ(9, folder.list().size());
    for (const QString& name : names)
        EXPECT_EQ(name, folder.load(name).valueOr({}).name);
}

TEST_F(RecipeFolderTest, OtherFilesAreNoRecipesAndDamagedOnesAreListed)
{
    save(QStringLiteral("a"));
    inside.put(path("recipes/b.json"), "{");
    inside.put(path("recipes/notes.txt"), "x");
    inside.put(path("recipes/a.json.12345678"), "half");
    inside.put(path("recipes/../c.json"), "{}");
    EXPECT_EQ("[a][b!]", listed());
}

TEST_F(RecipeFolderTest, ACopiedFileHasTheNameOfTheFile)
{
    save(QStringLiteral("a"));
    ASSERT_TRUE(QFile::copy(path("recipes/a.json"), path("recipes/b.json")));
    EXPECT_EQ("b", folder.load(QStringLiteral("b")).valueOr({}).name.toStdString());
}

TEST_F(RecipeFolderTest, WhatCannotBeKeptIsSaid)
{
    EXPECT_FALSE(succeeds(folder.save(recipe(QStringLiteral(" a")))));
    // 43 letters of three bytes each, as three characters a byte: 387 bytes.
    EXPECT_FALSE(succeeds(folder.save(recipe(QString(43, QChar(0x20ac))))));
    EXPECT_EQ("expected a shorter name", error.toStdString());
    files.put(path("recipes"), "a file in the way");
    EXPECT_FALSE(succeeds(folder.save(recipe(QStringLiteral("a")))));
    EXPECT_TRUE(error.contains("cannot be made")) << error.toStdString();
}

} // namespace
} // namespace plc::panel
