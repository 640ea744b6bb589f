#ifndef PLC_PROJECT_PROJECT_H
#define PLC_PROJECT_PROJECT_H

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <memory>
#include <optional>

namespace plc::values {
struct IecType; // values/iec_types.h
}

namespace plc::project {

struct StructureType;

/// Bounds of one array dimension, both inclusive.
struct ArrayDimension {
    int lower = 0;
    int upper = 0;
};

/// How the simulator lets a variable live; `parameters` are the signal's own (period, amplitude,
/// …).
struct Signal {
    QString kind; ///< "constant", "ramp", "sine", "square", "counter" or "walk"
    QJsonObject parameters;
};

/// A variable of a scope or a member of a structure. The elements of an array lie one behind the
/// other, the last subscript running fastest.
struct Variable {
    QString name;
    QString description;
    /// Exactly one of `type` and `structure` is set.
    const values::IecType* type = nullptr;
    std::shared_ptr<const StructureType> structure;
    /// Capacity in characters of a STRING or WSTRING.
    int stringLength = 0;
    /// Byte address in the area (bit address for BIT), or byte offset in the structure.
    qint32 offset = 0;
    /// Memory area; of no meaning in a member.
    int area = 0;
    QVector<ArrayDimension> dimensions;
    QString unit; ///< Shown behind the value; may be empty.
    /// Lies on purpose over memory of other variables (a status word and its bits).
    bool overlay = false;
    std::optional<Signal> signal; ///< Simulator only.
};

struct StructureType {
    QString name;
    QString description;
    qint32 size = 0; ///< Bytes of one element, as array elements lie apart.
    QVector<Variable> members;
};

struct ScopeDefinition {
    QString name;
    QVector<Variable> variables;
};

/// Area indexes are sent as 16-bit numbers.
constexpr int kHighestAreaIndex = 0xffff;

/// A memory area as the simulated PLC has it.
struct MemoryArea {
    int index = 0;
    qint32 size = 0; ///< bytes
};

struct ProjectSettings {
    int maxReadBytes = 200; ///< bytes of one read entry at most
    int defaultStation = 0;
    bool multiStation = false;
    int retryLimit = 2;        ///< failed replies tolerated in one transaction
    int connectTimeout = 3000; ///< ms
    int replyTimeout = 1000;   ///< ms, for a whole reply
    int reconnectDelay = 500;  ///< ms after the first failure; doubled up to reconnectDelayLimit
    int reconnectDelayLimit = 10000; ///< ms
    int staleAfter = 3000;           ///< ms after which a value is shown as stale
    bool readOnly = false;           ///< nothing is ever written
};

/// A cyclically read value: a label, and for an array slice the elements from that label on.
struct CyclicLabel {
    QString label;
    int elements = 1;
    int station = 0; ///< counts only while settings.multiStation is set
};

struct Project {
    QString name;
    QString address = QStringLiteral("127.0.0.1");
    quint16 port = 1200;
    ProjectSettings settings;
    QVector<MemoryArea> areas;
    /// Each behind those that its members are made of.
    QVector<std::shared_ptr<const StructureType>> structures;
    QVector<ScopeDefinition> scopes;
    QVector<CyclicLabel> cyclic;
};

/// Whether variables of scopes may share memory without being marked as overlays.
enum class SharedMemoryRule { Refused, Allowed };

/// Reads and checks the project file at `path`. On failure returns nothing and sets `error` to one
/// line that names the file, the path in the document (`/scopes/0/variables/3/type`), what was
/// found and what was expected.
std::optional<Project> loadProject(const QString& path, QString* error,
                                   SharedMemoryRule rule = SharedMemoryRule::Refused);

/// As loadProject() from bytes; `name` stands for the file in errors.
std::optional<Project> parseProject(const QByteArray& json, const QString& name, QString* error,
                                    SharedMemoryRule rule = SharedMemoryRule::Refused);

} // namespace plc::project

#endif
