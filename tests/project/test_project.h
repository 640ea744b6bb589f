#ifndef PLC_TESTS_PROJECT_TEST_PROJECT_H
#define PLC_TESTS_PROJECT_TEST_PROJECT_H

#include <gtest/gtest.h>

#include "project/project.h"

namespace plc::project {
namespace test {

/// A project with a variable of every type, in area 1 from address 0 on, and larger ones in area 2.
inline Project testProject()
{
    const char json[] = R"({
      "name": "Test",
      "plc": {"address": "127.0.0.1", "port": 1200},
      "settings": {"maxReadBytes": 200, "retryLimit": 2, "connectTimeout": 3000,
                   "replyTimeout": 1000, "reconnectDelay": 500, "reconnectDelayLimit": 4000,
                   "staleAfter": 3000},
      "areas": [{"index": 0, "size": 256}, {"index": 1, "size": 1024}, {"index": 2, "size": 16384}],
      "structures": [{"name": "Axis", "size": 8, "members": [
        {"name": "position", "type": "DINT", "offset": 0},
        {"name": "speed", "type": "INT", "offset": 4}]}],
      "scopes": [
        {"name": "Io", "variables": [
          {"name": "start", "type": "BIT", "area": 0, "offset": 3},
          {"name": "lamp", "type": "BIT", "area": 0, "offset": 32, "array": [[0, 19]]}]},
        {"name": "Main", "variables": [
          {"name": "flag", "type": "BOOL", "area": 1, "offset": 0},
          {"name": "byte", "type": "BYTE", "area": 1, "offset": 1},
          {"name": "small", "type": "SINT", "area": 1, "offset": 2},
          {"name": "usmall", "type": "USINT", "area": 1, "offset": 3},
          {"name": "speed", "type": "INT", "area": 1, "offset": 4, "unit": "rpm"},
          {"name": "count", "type": "UINT", "area": 1, "offset": 6},
          {"name": "word", "type": "WORD", "area": 1, "offset": 8},
          {"name": "long", "type": "DINT", "area": 1, "offset": 12},
          {"name": "ulong", "type": "UDINT", "area": 1, "offset": 16},
          {"name": "real", "type": "REAL", "area": 1, "offset": 20},
          {"name": "dword", "type": "DWORD", "area": 1, "offset": 24},
          {"name": "time", "type": "TIME", "area": 1, "offset": 28},
          {"name": "lreal", "type": "LREAL", "area": 1, "offset": 32},
          {"name": "lint", "type": "LINT", "area": 1, "offset": 40},
          {"name": "ulint", "type": "ULINT", "area": 1, "offset": 48},
          {"name": "lword", "type": "LWORD", "area": 1, "offset": 56},
          {"name": "text", "type": "STRING", "length": 10, "area": 1, "offset": 64},
          {"name": "wide", "type": "WSTRING", "length": 10, "area": 1, "offset": 76},
          {"name": "table", "type": "INT", "area": 1, "offset": 100, "array": [[0, 3], [1, 5]]},
          {"name": "axis", "type": "Axis", "area": 1, "offset": 200, "array": [[1, 4]]},
          {"name": "bytes", "type": "BYTE", "area": 1, "offset": 300, "array": [[0, 9]]}]},
        {"name": "Big", "variables": [
          {"name": "same", "type": "INT", "area": 2, "offset": 4},
          {"name": "block", "type": "DINT", "area": 2, "offset": 1000, "array": [[0, 599]]},
          {"name": "texts", "type": "STRING", "length": 10, "area": 2, "offset": 8000,
           "array": [[0, 3]]},
          {"name": "far", "type": "INT", "area": 2, "offset": 16000}]}],
      "cyclic": ["Main.speed"]})";
    const Expected<Project> project =
        parseProject(QByteArray(json), QStringLiteral("test project"));
    if (!project)
        ADD_FAILURE() << project.error().text.toStdString();
    return project.valueOr(Project());
}

} // namespace test
} // namespace plc::project

#endif
