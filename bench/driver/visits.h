#ifndef PLC_BENCH_VISITS_H
#define PLC_BENCH_VISITS_H

#include <algorithm>
#include <string>
#include <vector>

#include "support/labelled_plant.h"

namespace plc::bench {

/// Which labels of a plant are visited, over and over, each benchmark of one work alike.
enum class Visits {
    All,     ///< Every label of the scope, in random order.
    Hundred, ///< A hundred labels from anywhere in the scope, as on one screen of a panel.
    One
};

inline std::size_t countOf(Visits visits, std::size_t labels)
{
    constexpr std::size_t kScreen = 100;
    switch (visits) {
        case Visits::All:
            return labels;
        case Visits::Hundred:
            return std::min(kScreen, labels);
        default:
            return 1;
    }
}

inline std::string nameOf(Visits visits)
{
    switch (visits) {
        case Visits::All:
            return "all_labels";
        case Visits::Hundred:
            return "hundred_labels";
        default:
            return "one_label";
    }
}

/// A shape and which of its labels are visited.
struct LabelCase {
    PlantShape shape;
    Visits visits;

    std::string name() const { return shape.name() + '/' + nameOf(visits); }
};

/// What is measured of access by label: every kind of label and size of value over the whole scope,
/// and the plainest label for the fewer visits as well.
inline std::vector<LabelCase> labelCases(const std::vector<int>& registerCounts)
{
    std::vector<LabelCase> cases;
    for (const LabelKind kind : {LabelKind::Scalar, LabelKind::ArrayElement, LabelKind::Member}) {
        for (const int registers : registerCounts) {
            for (const int variables : {100, 10000, 100000}) {
                const PlantShape shape{kind, registers, variables};
                cases.push_back({shape, Visits::All});
                if (kind != LabelKind::Scalar || registers != 2)
                    continue;
                if (variables > 100)
                    cases.push_back({shape, Visits::Hundred});
                cases.push_back({shape, Visits::One});
            }
        }
    }
    return cases;
}

} // namespace plc::bench

#endif
