#include <sys/stat.h>

#include "panel/access/secrets.h"
#include "tests/panel/access/access_fixture.h"
#include "tests/support/stated_text.h"

namespace plc::panel {
namespace {

using test::stated;

class Users : public test::FileTest {
protected:
    QString file() const { return path("users.json"); }
    UsersFile load()
    {
        const Expected<UsersFile> users = UsersFile::load(file());
        EXPECT_TRUE(succeeds(users)) << error.toStdString();
        return *users;
    }
    mode_t mode() const
    {
        struct stat status = {};
        ::stat(QFile::encodeName(file()).constData(), &status);
        return status.st_mode & 0777;
    }
    void expectMalformed(const char* text, const char* sentence)
    {
        files.put(file(), text);
        ASSERT_EQ(0, ::chmod(QFile::encodeName(file()).constData(), 0600));
        EXPECT_FALSE(succeeds(UsersFile::load(file())));
        EXPECT_EQ(file() + stated(": ") + stated(sentence), error);
    }
};

TEST(Password, IsHashedWithArgon2idAndASaltOfItsOwn)
{
    const QByteArray hash = *hashPassword(stated("correct horse"));
    // 19 MiB, two passes, one processor.
    EXPECT_TRUE(hash.startsWith("$argon2id$v=19$m=19456,t=2,p=1$")) << hash.toStdString();
    EXPECT_TRUE(verifyPassword(hash, stated("correct horse")));
    EXPECT_FALSE(verifyPassword(hash, stated("correct horsf")));
    EXPECT_NE(hash, *hashPassword(stated("correct horse")));
}

TEST(Password, FitsNoHashThatIsNone)
{
    EXPECT_FALSE(verifyPassword("", stated("x")));
    EXPECT_FALSE(verifyPassword("$argon2id$v=19$m=19456,t=2,p=1$rubbish", stated("x")));
    EXPECT_FALSE(verifyPassword(QByteArray(1000, 'a'), stated("x")));
    EXPECT_FALSE(verifyPassword(*hashPassword(stated("long secret"), cheapHash()),
                                QString(2000, QLatin1Char('x'))));
}

TEST(Password, HasEightCharactersOrMoreAndIsNotTheUsersName)
{
    EXPECT_FALSE(checkPassword(stated("1234567"), stated("anna")));
    EXPECT_TRUE(checkPassword(stated("12345678"), stated("anna")));
    EXPECT_FALSE(checkPassword(stated("Annabelle"), stated("annabelle")));
    EXPECT_TRUE(checkPassword(QString(1024, QLatin1Char('x')), stated("anna")));
    EXPECT_FALSE(checkPassword(QString(1025, QLatin1Char('x')), stated("anna")));
}

TEST_F(Users, AreKeptInAFileForItsOwnerAlone)
{
    UsersFile users = load();
    ASSERT_TRUE(succeeds(users.put({stated("anna"), Role::Operator, "hash"})));
    ASSERT_TRUE(succeeds(users.put({stated("bert"), Role::Engineer, "other"})));
    ASSERT_TRUE(succeeds(users.save()));
    EXPECT_EQ(mode_t(0600), mode());
    const UsersFile again = load();
    ASSERT_EQ(2, again.users().size());
    ASSERT_TRUE(again.find(stated("anna")));
    EXPECT_EQ(Role::Operator, again.find(stated("anna"))->role);
    EXPECT_EQ("hash", again.find(stated("anna"))->passwordHash);
    EXPECT_FALSE(again.find(stated("Anna")));
    EXPECT_EQ("users.json", names());
}

TEST_F(Users, MayHaveATokenOfWhichOnlyTheHashIsKept)
{
    // As sha256sum tells it.
    const QByteArray hash = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
    EXPECT_EQ(hash, tokenHash("abc"));
    UsersFile users = load();
    ASSERT_TRUE(users.put({stated("anna"), Role::Viewer, "1", hash}));
    ASSERT_TRUE(users.put({stated("bert"), Role::Engineer, "2", {}}));
    ASSERT_TRUE(succeeds(users.save()));
    const UsersFile again = load();
    ASSERT_TRUE(again.findByToken(hash));
    EXPECT_EQ(stated("anna"), again.findByToken(hash)->name);
    EXPECT_FALSE(again.findByToken(tokenHash("abd")));
    EXPECT_FALSE(again.findByToken({}));
    EXPECT_NE(randomToken(), randomToken());
    EXPECT_EQ(43, randomToken().size());
}

TEST_F(Users, TakeThePlaceOfTheOneOfTheSameName)
{
    UsersFile users = load();
    ASSERT_TRUE(users.put({stated("anna"), Role::Viewer, "1"}));
    ASSERT_TRUE(users.put({stated("anna"), Role::Engineer, "2"}));
    EXPECT_EQ(1, users.users().size());
    EXPECT_EQ(Role::Engineer, users.find(stated("anna"))->role);
    EXPECT_TRUE(users.remove(stated("anna")));
    EXPECT_FALSE(users.remove(stated("anna")));
}

TEST_F(Users, HaveVisibleNamesThatMeanNobodyElse)
{
    UsersFile users = load();
    for (const QString& name : {QString(), stated("two words"), stated("tab\t"), stated("local"),
                                QString(65, QLatin1Char('a'))})
        EXPECT_FALSE(users.put({name, Role::Viewer, "1"})) << name.toStdString();
    EXPECT_FALSE(users.put({stated("anna"), Role::None, "1"}));
    EXPECT_TRUE(users.put({QString(64, QLatin1Char('a')), Role::Viewer, "1"}));
    EXPECT_TRUE(users.put({QString::fromUtf8("J\xC3\xBCrgen"), Role::Viewer, "1"}));
}

TEST_F(Users, AreNotTakenFromAFileThatOthersCanRead)
{
    ASSERT_TRUE(load().save());
    for (const mode_t bad : {mode_t(0640), mode_t(0604), mode_t(0620)}) {
        ASSERT_EQ(0, ::chmod(QFile::encodeName(file()).constData(), bad));
        EXPECT_FALSE(succeeds(UsersFile::load(file()))) << bad;
    }
    EXPECT_EQ(file() + stated(": others than its owner can read or change it; chmod 600 it"),
              error);
}

TEST_F(Users, OfAMalformedFileAreNone)
{
    expectMalformed("rubbish", "no file of users");
    expectMalformed("{'users':{}}", "no file of users");
    expectMalformed(R"({"users":[{"name":"a","role":"viewer"}]})", "a has no password");
    expectMalformed(R"({"users":[{"name":"a","role":"viewer","password":"x","token":"abc"}]})",
                    "a has a token that is none");
    expectMalformed(R"({"users":[{"name":"a","role":"viewer","password":"x","token":7}]})",
                    "a has a token that is none");
    expectMalformed(R"({"users":[{"name":"a","role":"chief","password":"x"}]})",
                    "a: a role is viewer, operator or engineer");
    expectMalformed(R"({"users":[{"name":"a","role":"viewer","password":"x"},
                                 {"name":"a","role":"engineer","password":"x"}]})",
                    "a stands there twice");
}

} // namespace
} // namespace plc::panel
