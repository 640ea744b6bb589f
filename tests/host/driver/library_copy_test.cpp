#include "host/driver/library_copy.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <dlfcn.h>
#include <fcntl.h>

#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

QByteArray builtLibrary()
{
    QFile file(QStringLiteral(PLC_LIBRARY));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

/// Open descriptors of this process.
int descriptors()
{
    return int(QDir(QStringLiteral("/proc/self/fd"))
                   .entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot)
                   .size());
}

DriverLibrary copyOfBuilt()
{
    const Expected<DriverLibrary> copy = DriverLibrary::loadCopy(QStringLiteral(PLC_LIBRARY));
    if (!copy)
        ADD_FAILURE() << copy.error().text.toStdString();
    return *copy;
}

TEST(LibraryCopy, InMemoryIsAFileOfItsOwnThatIsClosedOnExec)
{
    Expected<LibraryCopy> copy = LibraryCopy::inMemory(QByteArray("abc"));
    ASSERT_TRUE(copy) << copy.error().text.toStdString();
    QFile file(QString::fromLatin1(copy->path()));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ("abc", file.readAll());
    const int descriptor = copy->takeDescriptor();
    EXPECT_EQ(FD_CLOEXEC, ::fcntl(descriptor, F_GETFD));
    ::close(descriptor);
}

TEST(LibraryCopy, InAFolderIsGoneAfterwards)
{
    const QTemporaryDir folder;
    {
        const Expected<LibraryCopy> copy =
            LibraryCopy::inFolder(builtLibrary(), {QStringLiteral("/nowhere"), folder.path()});
        ASSERT_TRUE(copy) << copy.error().text.toStdString();
        EXPECT_EQ(1u, QDir(folder.path()).count() - 2); // "." and ".."
        void* library = ::dlopen(copy->path().constData(), RTLD_NOW);
        ASSERT_NE(nullptr, library);
        ::dlclose(library);
    }
    EXPECT_EQ(0u, QDir(folder.path()).count() - 2);
}

TEST(LibraryCopy, WithoutAFolderThatTakesItTheReasonIsTold)
{
    const Expected<LibraryCopy> copy =
        LibraryCopy::inFolder(QByteArray("abc"), {QStringLiteral("/nowhere")});
    ASSERT_FALSE(copy);
    EXPECT_EQ("/nowhere: No such file or directory", copy.error().text.toStdString());
}

TEST(DriverLibrary, CopiesShareNothingWithTheLibraryOrEachOther)
{
    const Expected<DriverLibrary> library = DriverLibrary::load(QStringLiteral(PLC_LIBRARY));
    ASSERT_TRUE(library);
    const DriverLibrary one = copyOfBuilt();
    const DriverLibrary two = copyOfBuilt();
    RW_VAR read;
    read.length = 1;
    EXPECT_EQ(1, one.functions().addListReadVar(&read));
    EXPECT_EQ(2, one.functions().addListReadVar(&read));
    EXPECT_EQ(1, two.functions().addListReadVar(&read));
    EXPECT_EQ(1, library->functions().addListReadVar(&read));
}

TEST(DriverLibrary, LoadedTwiceIsTheSameLibrary)
{
    const Expected<DriverLibrary> one = DriverLibrary::load(QStringLiteral(PLC_LIBRARY));
    const Expected<DriverLibrary> two = DriverLibrary::load(QStringLiteral(PLC_LIBRARY));
    ASSERT_TRUE(one && two);
    EXPECT_EQ(one->functions().dataCom, two->functions().dataCom);
}

TEST(DriverLibrary, CopyHoldsOneDescriptorUntilItIsUnloaded)
{
    const int before = descriptors();
    {
        const DriverLibrary one = copyOfBuilt();
        const DriverLibrary same = one;
        const DriverLibrary two = copyOfBuilt();
        EXPECT_EQ(before + 2, descriptors());
    }
    EXPECT_EQ(before, descriptors());
}

TEST(DriverLibrary, CopiesThatFollowEachOtherBeginAnew)
{
    // The second one gets the descriptor of the first, and with it the same name.
    for (int round = 0; round < 2; ++round) {
        const DriverLibrary copy = copyOfBuilt();
        RW_VAR read;
        read.length = 1;
        EXPECT_EQ(1, copy.functions().addListReadVar(&read));
    }
}

TEST(DriverLibrary, CopyNeedsNoFolderThatCanBeWrittenTo)
{
    qputenv("TMPDIR", "/nowhere");
    qputenv("XDG_RUNTIME_DIR", "/nowhere");
    EXPECT_EQ(1, copyOfBuilt().functions().queryFinishFlag());
}

} // namespace
} // namespace test
} // namespace plc::host
