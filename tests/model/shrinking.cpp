#include "model/shrinking.h"

#include <algorithm>

#include "model/side_by_side.h"

namespace plc::model {

namespace {

/// Runs after which shrinking ends with what it has.
constexpr int kMostRuns = 20000;

// Simpler values in place of a value, the simplest first.

std::vector<int> simpler(int number)
{
    std::vector<int> out;
    const std::int64_t exact = number;
    for (std::int64_t candidate : {std::int64_t(0), exact / 2, exact - (exact > 0 ? 1 : -1)}) {
        if (std::abs(candidate) < std::abs(exact))
            out.push_back(int(candidate));
    }
    return out;
}

std::vector<std::u16string> simpler(const std::u16string& text)
{
    std::vector<std::u16string> out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::u16string shorter = text;
        shorter.erase(i, 1);
        out.push_back(shorter);
    }
    return out;
}

template <typename Item>
std::vector<std::vector<Item>> withoutSome(const std::vector<Item>& list)
{
    std::vector<std::vector<Item>> out;
    for (std::size_t size = list.size(); size >= 1; size /= 2) {
        for (std::size_t start = 0; start + size <= list.size(); start += size) {
            std::vector<Item> shorter = list;
            shorter.erase(shorter.begin() + std::ptrdiff_t(start),
                          shorter.begin() + std::ptrdiff_t(start + size));
            out.push_back(shorter);
        }
    }
    return out;
}

/// Copies of `record` with `member` replaced by each of its simpler values.
template <typename Record, typename Member, typename Candidates>
void addWith(std::vector<Record>& out, const Record& record, Member Record::*member,
             const Candidates& candidates)
{
    for (const auto& candidate : candidates) {
        Record copy = record;
        copy.*member = Member(candidate);
        out.push_back(copy);
    }
}

std::vector<Variable> simpler(const Variable& var)
{
    std::vector<Variable> out;
    for (std::int32_t Variable::*member :
         {&Variable::category, &Variable::aux1, &Variable::aux2, &Variable::aux3,
          &Variable::deviceNo, &Variable::result, &Variable::dataType, &Variable::address,
          &Variable::station, &Variable::length, &Variable::aux12, &Variable::areaIndex})
        addWith(out, var, member, simpler(var.*member));
    addWith(out, var, &Variable::label, simpler(var.label));
    addWith(out, var, &Variable::subLabel, simpler(var.subLabel));
    addWith(out, var, &Variable::data, withoutSome(var.data));
    return out;
}

std::vector<HostItem> simpler(const HostItem& item)
{
    std::vector<HostItem> out;
    addWith(out, item, &HostItem::station, simpler(item.station));
    addWith(out, item, &HostItem::subLabel, simpler(item.subLabel));
    addWith(out, item, &HostItem::label, simpler(item.label));
    addWith(out, item, &HostItem::count, simpler(item.count));
    return out;
}

std::vector<Symbol> simpler(const Symbol& symbol);

/// The list without some of its records, and with one of them simpler.
template <typename Item>
std::vector<std::vector<Item>> simplerList(const std::vector<Item>& list)
{
    std::vector<std::vector<Item>> out = withoutSome(list);
    for (std::size_t i = 0; i < list.size(); ++i) {
        for (const Item& candidate : simpler(list[i])) {
            out.push_back(list);
            out.back()[i] = candidate;
        }
    }
    return out;
}

std::vector<Symbol> simpler(const Symbol& symbol)
{
    std::vector<Symbol> out;
    addWith(out, symbol, &Symbol::members, simplerList(symbol.members));
    addWith(out, symbol, &Symbol::typeDef, simplerList(symbol.typeDef));
    addWith(out, symbol, &Symbol::arrayBounds, simplerList(symbol.arrayBounds));
    addWith(out, symbol, &Symbol::areaInfo, simplerList(symbol.areaInfo));
    addWith(out, symbol, &Symbol::name, simpler(symbol.name));
    addWith(out, symbol, &Symbol::typeFlags, simpler(symbol.typeFlags));
    addWith(out, symbol, &Symbol::offset, simpler(symbol.offset));
    addWith(out, symbol, &Symbol::dimCount, simpler(symbol.dimCount));
    if (symbol.memberCount > symbol.members.size()) {
        Symbol copy = symbol;
        copy.memberCount = std::uint32_t(symbol.members.size());
        out.push_back(copy);
    }
    return out;
}

template <typename Value>
std::vector<std::optional<Value>> optionals(const std::vector<Value>& values)
{
    return std::vector<std::optional<Value>>(values.begin(), values.end());
}

struct SimplerSteps {
    std::vector<Step> out;

    template <typename Call>
    void add(const std::vector<Call>& calls)
    {
        out.insert(out.end(), calls.begin(), calls.end());
    }

    void operator()(const SetSettings&) {}
    void operator()(const SetCallbacks&) {}
    void operator()(const Ask&) {}
    void operator()(const ChangeWord& s) { with(s, &ChangeWord::value); }
    void operator()(const EnableStation& s)
    {
        with(s, &EnableStation::station);
        with(s, &EnableStation::enable);
    }
    void operator()(const PassSymbols& s)
    {
        std::vector<PassSymbols> calls;
        if (s.records)
            addWith(calls, s, &PassSymbols::records, optionals(simplerList(*s.records)));
        add(calls);
    }
    void operator()(const AddRead& s) { withRecord(s); }
    void operator()(const AddWrite& s)
    {
        withRecord(s);
        with(s, &AddWrite::append);
    }
    void operator()(const AddOnce& s)
    {
        withRecord(s);
        with(s, &AddOnce::append);
    }
    void operator()(const RebuildReadList& s)
    {
        std::vector<RebuildReadList> calls;
        if (s.items)
            addWith(calls, s, &RebuildReadList::items, optionals(simplerList(*s.items)));
        add(calls);
    }
    void operator()(const Cut& s)
    {
        with(s, &Cut::total);
        with(s, &Cut::maxLen);
        std::vector<Cut> calls;
        addWith(calls, s, &Cut::var, simpler(s.var));
        add(calls);
    }
    void operator()(const Fold& s)
    {
        with(s, &Fold::maxLen);
        std::vector<Fold> calls;
        addWith(calls, s, &Fold::group, simplerList(s.group));
        add(calls);
    }
    void operator()(const AskAddress& s) { with(s, &AskAddress::label); }
    void operator()(const ResolveLabel& s) { with(s, &ResolveLabel::label); }
    void operator()(const ReadValue& s)
    {
        with(s, &ReadValue::label);
        with(s, &ReadValue::count);
    }
    void operator()(const WriteValue& s)
    {
        with(s, &WriteValue::label);
        with(s, &WriteValue::subLabel);
        with(s, &WriteValue::station);
        with(s, &WriteValue::count);
        with(s, &WriteValue::category);
        with(s, &WriteValue::aux1);
        std::vector<WriteValue> calls;
        if (s.value)
            addWith(calls, s, &WriteValue::value, optionals(withoutSome(*s.value)));
        add(calls);
    }
    void operator()(const ChangeRequest& s) { with(s, &ChangeRequest::value); }
    void operator()(const TakeReply& s)
    {
        with(s, &TakeReply::receivedOffset);
        if (!s.plan)
            return;
        for (const ReplyPlan& plan : {ReplyPlan{ReplyPlan::Good, 0, 1},
                                      ReplyPlan{s.plan->kind, s.plan->number / 2, s.plan->seed}}) {
            if (plan.kind != s.plan->kind || plan.number != s.plan->number)
                out.push_back(TakeReply{s.bytes, s.receivedOffset, plan});
        }
    }

private:
    template <typename Call, typename Member>
    void with(const Call& call, Member Call::*member)
    {
        std::vector<Call> calls;
        addWith(calls, call, member, simpler(call.*member));
        add(calls);
    }
    template <typename Call>
    void withRecord(const Call& call)
    {
        std::vector<Call> calls;
        if (call.var)
            addWith(calls, call, &Call::var, optionals(simpler(*call.var)));
        add(calls);
    }
};

class Shrinker {
public:
    Shrinker(const Sequence& failing, const Finder& find) : m_best(failing), m_find(find) {}

    Sequence shrink()
    {
        bool hasShrunk = true;
        while (hasShrunk && m_runs < kMostRuns) {
            hasShrunk = leaveStepsOut();
            hasShrunk = simplifySteps() || hasShrunk;
        }
        return m_best;
    }

private:
    /// Keeps the candidate when it shows a difference, up to the step that does.
    bool accept(const Sequence& candidate)
    {
        if (m_runs >= kMostRuns)
            return false;
        ++m_runs;
        const Finding finding = m_find(candidate);
        if (!finding)
            return false;
        m_best.assign(candidate.begin(), candidate.begin() + finding.step + 1);
        return true;
    }

    bool leaveStepsOut()
    {
        bool hasShrunk = false;
        for (std::size_t size = m_best.size() / 2; size >= 1; size /= 2) {
            std::size_t start = 0;
            while (start + size <= m_best.size()) {
                Sequence shorter = m_best;
                shorter.erase(shorter.begin() + std::ptrdiff_t(start),
                              shorter.begin() + std::ptrdiff_t(start + size));
                if (accept(shorter))
                    hasShrunk = true;
                else
                    start += size;
            }
        }
        return hasShrunk;
    }

    bool simplifySteps()
    {
        bool hasShrunk = false;
        for (std::size_t i = 0; i < m_best.size(); ++i) {
            while (i < m_best.size() && simplifyStep(i))
                hasShrunk = true;
        }
        return hasShrunk;
    }

    bool simplifyStep(std::size_t i)
    {
        SimplerSteps steps;
        std::visit(steps, m_best[i]);
        for (const Step& step : steps.out) {
            Sequence simplerSequence = m_best;
            simplerSequence[i] = step;
            if (accept(simplerSequence))
                return true;
        }
        return false;
    }

    Sequence m_best;
    Finder m_find;
    int m_runs = 0;
};

} // namespace

Finding findDifference(const Sequence& sequence)
{
    SideBySide sides;
    Finding finding;
    for (std::size_t i = 0; i < sequence.size(); ++i) {
        finding.difference = sides.take(sequence[i]);
        if (finding.difference.empty() && i + 1 == sequence.size())
            finding.difference = sides.compareWholeImage();
        if (!finding.difference.empty()) {
            finding.step = int(i);
            return finding;
        }
    }
    return finding;
}

Sequence withReplyBytes(const Sequence& sequence)
{
    SideBySide sides;
    Sequence out;
    for (const Step& step : sequence) {
        out.push_back(sides.concrete(step));
        sides.take(out.back());
    }
    return out;
}

Sequence shrink(const Sequence& failing, const Finder& find)
{
    return Shrinker(failing, find).shrink();
}

} // namespace plc::model
