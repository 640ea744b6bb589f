// Comma-separated values that go through a spreadsheet and come back.

#include "tests/e2e/plant.h"
#include "tests/e2e/spawned_process.h"

namespace plc::test {
namespace {

constexpr char kSpreadsheetProject[] = R"({
  'name': 'Computed',
  'areas': [{'index': 1, 'size': 16}],
  'scopes': [
    {'name': '@S', 'variables': [
      {'name': 'a', 'type': 'INT', 'area': 1, 'offset': 0, 'unit': '=1+1', 'description': '-5'}]},
    {'name': '-S', 'variables': [
      {'name': 'a', 'type': 'INT', 'area': 1, 'offset': 2, 'unit': '\'=1', 'description': '+x'}]}]
})";

class Spreadsheet : public Plant {
protected:
    Spreadsheet()
    {
        writeProject(QByteArray(kSpreadsheetProject).replace("\\'", "\\u0027"));
        startSimulator();
        poke(1, 0, "FFFB 0007");
    }
};

TEST_F(Spreadsheet, TakesNoTextForAFormulaAndLabelsComeBack)
{
    const QStringList project{QStringLiteral("--project"), projectPath(),
                              QStringLiteral("--driver"), QStringLiteral(PLC_LIBRARY),
                              QStringLiteral("--csv")};
    const Ending symbols =
        runToEnd(QStringLiteral(PLC_HOST), QStringList{QStringLiteral("symbols")} + project, {});
    EXPECT_EQ(
        "label,type,area,address,size,unit,description\n"
        "'@S.a,INT,1,0,2,'=1+1,-5\n"
        "'-S.a,INT,1,2,2,''=1,'+x\n",
        symbols.output.toStdString());
    QFile file(projectPath() + QStringLiteral(".csv"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(symbols.output);
    file.close();
    const Ending read = runToEnd(QStringLiteral(PLC_HOST),
                                 QStringList{QStringLiteral("read")} + project +
                                     QStringList{QStringLiteral("--port"), simulator().port(),
                                                 QStringLiteral("--labels"), file.fileName()},
                                 {});
    EXPECT_EQ(
        "label,type,value,unit,outcome\n"
        "'@S.a,INT,-5,'=1+1,done\n"
        "'-S.a,INT,7,''=1,done\n",
        read.output.toStdString())
        << read.errors.toStdString();
}

} // namespace
} // namespace plc::test
