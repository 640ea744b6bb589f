#ifndef PLC_BENCH_SUPPORT_LABELLED_PLANT_H
#define PLC_BENCH_SUPPORT_LABELLED_PLANT_H

#include <memory>
#include <string>
#include <vector>

#include "baseline/straightforward_driver.h"
#include "support/driver.h"

namespace plc::bench {

/// What the labels name.
enum class LabelKind {
    Scalar,
    ArrayElement,
    Member ///< Of an array of structures three deep.
};
const char* nameOf(LabelKind kind);

/// One scope of `variables` variables of one kind, and one label into each of them.
struct PlantShape {
    LabelKind kind = LabelKind::Scalar;
    int registers = 1; ///< 16-bit registers that are read or written; chooses the type.
    int variables = 1;

    /// For example "scalar/2_registers/10000".
    std::string name() const;
};

/// A symbol list with what the benchmarks of it need; each is made when it is first asked for.
class LabelledPlant {
public:
    explicit LabelledPlant(const PlantShape& shape);

    /// In random order, each at a place of its own in memory, as the labels of a project are.
    const std::vector<QString>& labels() const { return m_labels; }
    /// A driver that has the symbols and in whose image all labels were touched.
    Driver& driver();
    baseline::StraightforwardDriver& straightforward();
    /// The floor of any access by label.
    const QHash<QString, int>& table();

private:
    const PlantShape m_shape;
    QList<Label_Type_Info> m_scopes;
    std::vector<QString> m_labels;
    std::unique_ptr<Driver> m_driver;
    std::unique_ptr<baseline::StraightforwardDriver> m_straightforward;
    QHash<QString, int> m_table;
};

} // namespace plc::bench

#endif
