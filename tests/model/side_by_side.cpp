#include "model/side_by_side.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "driver/label_access.h"
#include "driver/list_access.h"
#include "lists/read_list_rebuild.h"
#include "lists/variable_lists.h"
#include "model/library_side.h"
#include "model/planned_reply.h"

namespace plc::model {

namespace {

/// Up to this size the whole image is compared after each step, beyond it what the step touched.
constexpr std::size_t kSmallImage = 4096;

/// What the callbacks of the driver were called with.
std::vector<CallbackCall> driverCalls;

void noteResult(int hostTag, int category, int aux1, int status)
{
    driverCalls.push_back({CallbackCall::Result, {hostTag, category, aux1, status}});
}

void noteFailure(QList<RW_VAR>* list, int category, int mode)
{
    driverCalls.push_back(
        {CallbackCall::Failure, {list ? int(list->size()) : -1, category, mode, 0}});
}

void makeDriverNew()
{
    PLC_driver.~Communication_Protocol();
    new (&PLC_driver) Communication_Protocol;
    driverCalls.clear();
}

std::int32_t& wordOf(ComInfo& record, int word)
{
    static_assert(sizeof(ComInfo) == kSettingsWords * sizeof(std::int32_t), "words without gaps");
    return reinterpret_cast<std::int32_t*>(&record)[word];
}

} // namespace

SideBySide::SideBySide()
{
    makeDriverNew();
}

SideBySide::~SideBySide()
{
    makeDriverNew();
}

Step SideBySide::concrete(const Step& step) const
{
    const TakeReply* takeReply = std::get_if<TakeReply>(&step);
    if (!takeReply || !takeReply->plan)
        return step;
    return TakeReply{plannedReply(*takeReply->plan, m_model, m_lastReply),
                     takeReply->receivedOffset, std::nullopt};
}

std::string SideBySide::take(const Step& step)
{
    m_differences.clear();
    m_model.image.forgetTouched();
    std::visit([this](const auto& call) { run(call); }, concrete(step));
    checkCounters();
    m_differences.checkRecord("reply record", m_model.reply, PLC_driver.reply);
    m_differences.checkList("cyclic list", m_model.readList, PLC_driver.readList);
    m_differences.checkList("write list", m_model.writeList, PLC_driver.writeList);
    m_differences.checkList("one-shot list", m_model.onceList, PLC_driver.onceReadList);
    checkQueue();
    checkBatch();
    checkSettings();
    checkStations();
    checkCallbacks();
    checkImage();
    return m_differences.text();
}

std::string SideBySide::compareWholeImage()
{
    m_differences.clear();
    checkWholeImage();
    checkImageKeys();
    return m_differences.text();
}

void SideBySide::run(const SetSettings& step)
{
    const bool isNull = step.record < 0;
    m_model.setComInfo(isNull ? nullptr : &m_modelSettings[step.record]);
    SetComInfo(isNull ? nullptr : &m_settings[step.record]);
}

void SideBySide::run(const ChangeWord& step)
{
    m_modelSettings[step.record].word[step.word] = step.value;
    wordOf(m_settings[step.record], step.word) = step.value;
}

void SideBySide::run(const SetCallbacks& step)
{
    m_model.hasResultCallback = step.result;
    m_model.hasFailureCallback = step.failure;
    RegistCallBackFuncIntf(step.result ? noteResult : nullptr,
                           step.failure ? noteFailure : nullptr);
}

void SideBySide::run(const EnableStation& step)
{
    m_model.enableStation(step.station, step.enable);
    if (step.byEthernetName)
        EnableEthernet(step.station, step.enable);
    else
        EnCommStation(step.station, step.enable);
}

void SideBySide::run(const PassSymbols& step)
{
    if (!step.records) {
        PassVarName_2(nullptr);
        return;
    }
    m_model.passSymbols(*step.records);
    QList<Label_Type_Info> records = toQt(*step.records);
    PassVarName_2(&records);
    m_differences.check("records in the symbol table", m_model.labels.scopes().size(),
                        PLC_driver.symbolTable.size());
}

void SideBySide::run(const AddRead& step)
{
    if (!step.var) {
        m_differences.check("AddListReadVar(null)", 0, AddListReadVar(nullptr));
        return;
    }
    RW_VAR var = toQt(*step.var);
    m_differences.check("result of AddListReadVar", m_model.addRead(*step.var),
                        AddListReadVar(&var));
    m_differences.checkRecord("record given to AddListReadVar", *step.var, var);
}

void SideBySide::run(const AddWrite& step)
{
    if (!step.var) {
        m_differences.check("AddListWriteVar(null)", 0, AddListWriteVar(nullptr, step.append));
        return;
    }
    RW_VAR var = toQt(*step.var);
    m_differences.check("result of AddListWriteVar", m_model.addWrite(*step.var, step.append),
                        AddListWriteVar(&var, step.append));
    m_differences.checkRecord("record given to AddListWriteVar", *step.var, var);
}

void SideBySide::run(const AddOnce& step)
{
    if (!step.var) {
        m_differences.check("AddListOnceReadVar(null)", 0,
                            AddListOnceReadVar(nullptr, step.append));
        return;
    }
    Variable expected = *step.var;
    RW_VAR var = toQt(*step.var);
    m_differences.check("result of AddListOnceReadVar", m_model.addOnce(expected, step.append),
                        AddListOnceReadVar(&var, step.append));
    m_differences.checkRecord("record given to AddListOnceReadVar", expected, var);
}

void SideBySide::run(const RebuildReadList& step)
{
    if (!step.items) {
        m_differences.check("ReCreatReadVarList(null)", 0, ReCreatReadVarList(nullptr));
        return;
    }
    QList<HostVarItem> items = toQt(*step.items);
    m_differences.check("result of ReCreatReadVarList", m_model.rebuildReadList(*step.items),
                        ReCreatReadVarList(&items));
}

void SideBySide::run(const Cut& step)
{
    Variable expected = step.var;
    std::vector<Variable> expectedList;
    DriverModel::cut(step.total, step.maxLen, expected, expectedList);
    RW_VAR var = toQt(step.var);
    QList<RW_VAR> list;
    WhetherGroup(step.total, step.maxLen, &var, &list);
    m_differences.checkRecord("record given to WhetherGroup", expected, var);
    m_differences.checkList("list of WhetherGroup", expectedList, list);
}

void SideBySide::run(const Fold& step)
{
    std::vector<Variable> expected = step.group;
    QList<RW_VAR> group;
    for (const Variable& var : step.group)
        group.append(toQt(var));
    if (step.isSorted) {
        DriverModel::sort(expected);
        Bubble_Sort(&group);
    }
    m_model.foldInto(expected, step.maxLen);
    BitVarReCreat(&group, step.maxLen);
    m_differences.checkList("list given to BitVarReCreat", expected, group);
}

void SideBySide::run(const AskAddress& step)
{
    m_differences.check("result of PLCAddressChangeIntef", m_model.addressOf(step.label),
                        PLCAddressChangeIntef(0, toQt(step.label)));
}

void SideBySide::run(const ResolveLabel& step)
{
    // What failing walks leave behind counts as well.
    constexpr int kKeptType = 0xEE;
    constexpr int kKeptAddress = -11111;
    constexpr int kKeptArea = -22222;
    Place expected;
    expected.dataType = kKeptType;
    expected.address = kKeptAddress;
    expected.areaIndex = kKeptArea;
    ControlInformationM info = {kKeptType, kKeptAddress, kKeptArea};
    m_differences.check("result of get_label_address_info",
                        m_model.labels.resolve(step.label, expected),
                        get_label_address_info(toQt(step.label), info));
    m_differences.check("resolved type", int(expected.dataType), int(info.dataType));
    m_differences.check("resolved address", expected.address, info.address);
    m_differences.check("resolved area", expected.areaIndex, info.areaIndex);
}

void SideBySide::run(const ReadValue& step)
{
    const QString label = toQt(step.label);
    if (!step.hasBuffer) {
        m_differences.check("GetRegisterData into null", 0,
                            GetRegisterData(label, 0, 0, 0, nullptr, step.count));
        return;
    }
    Bytes expected;
    QByteArray value("old contents");
    m_differences.check("result of GetRegisterData",
                        m_model.readValue(step.label, step.count, expected),
                        GetRegisterData(label, 1, 2, 3, &value, step.count));
    m_differences.check("value of GetRegisterData", toQt(expected).toHex(), value.toHex());
}

void SideBySide::run(const WriteValue& step)
{
    const QString label = toQt(step.label);
    const QString subLabel = toQt(step.subLabel);
    if (!step.value) {
        m_differences.check("SetRegisterData from null", 0,
                            SetRegisterData(label, 0, subLabel, step.station, nullptr, step.count,
                                            step.category, step.aux1));
        return;
    }
    QByteArray value = toQt(*step.value);
    m_differences.check("result of SetRegisterData",
                        m_model.writeValue(step.label, step.subLabel, step.station, *step.value,
                                           step.count, step.category, step.aux1),
                        SetRegisterData(label, 0, subLabel, step.station, &value, step.count,
                                        step.category, step.aux1));
    m_differences.check("value given to SetRegisterData", toQt(*step.value).toHex(), value.toHex());
}

void SideBySide::run(const Ask&)
{
    const bool hasRequest = m_model.nextRequest();
    const Protocol* request = ComCommunication();
    m_differences.check("a request is returned", hasRequest, bool(request));
    if (request && !PLC_driver.requestQueue.isEmpty())
        m_differences.check("the head of the queue is returned", true,
                            request == &PLC_driver.requestQueue.first());
}

void SideBySide::run(const ChangeRequest& step)
{
    if (m_model.queue.empty() || PLC_driver.requestQueue.isEmpty())
        return;
    Request& expected = m_model.queue.front();
    Protocol* request = ComCommunication();
    switch (step.member) {
        case ChangeRequest::ReplyLength:
            expected.replyLength = request->replyLength = step.value;
            break;
        case ChangeRequest::DataOffset:
            expected.dataOffset = request->dataOffset = step.value;
            break;
        case ChangeRequest::MinReplyLength:
            expected.minReplyLength = request->minReplyLength = step.value;
            break;
    }
}

void SideBySide::run(const TakeReply& step)
{
    const RW_VAR* outcome = nullptr;
    if (!step.bytes) {
        m_model.takeReply(Bytes(), step.receivedOffset);
        outcome = DataCom(nullptr, step.receivedOffset);
    } else {
        m_lastReply = *step.bytes;
        const int size = int(m_lastReply.size());
        m_model.takeReply(m_lastReply, size + step.receivedOffset);
        // A block of its own, without the zero that Qt keeps behind the bytes.
        std::unique_ptr<char[]> block(new char[m_lastReply.size()]);
        std::copy(m_lastReply.begin(), m_lastReply.end(), block.get());
        QByteArray bytes = QByteArray::fromRawData(block.get(), size);
        outcome = DataCom(&bytes, size + step.receivedOffset);
    }
    m_differences.check("the reply record is returned", true, outcome == &PLC_driver.reply);
}

void SideBySide::checkQueue()
{
    const QList<Protocol>& actual = PLC_driver.requestQueue;
    m_differences.check("requests in the queue", m_model.queue.size(), std::size_t(actual.size()));
    if (m_model.queue.size() != std::size_t(actual.size()))
        return;
    for (std::size_t i = 0; i < m_model.queue.size(); ++i)
        m_differences.checkRequest(int(i), m_model.queue[i], actual.at(int(i)));
}

void SideBySide::checkBatch()
{
    m_differences.check("entries in the batch", m_model.batch.size(),
                        std::size_t(PLC_driver.batchCount));
    if (m_model.batch.size() != std::size_t(PLC_driver.batchCount))
        return;
    for (std::size_t i = 0; i < m_model.batch.size(); ++i)
        m_differences.checkRecord("batch entry", m_model.batch[i], PLC_driver.batch[i]);
}

void SideBySide::checkSettings()
{
    for (int record = 0; record < kSettingsRecords; ++record) {
        m_differences.check("settings record in use", m_model.settings == &m_modelSettings[record],
                            PLC_driver.settings == &m_settings[record]);
        for (int word = 0; word < kSettingsWords; ++word) {
            const int expected = m_modelSettings[record].word[word];
            const int actual = wordOf(m_settings[record], word);
            if (expected != actual)
                m_differences.add() << "word " << word << " of settings record " << record
                                    << ": model " << expected << ", driver " << actual << '\n';
        }
    }
}

void SideBySide::checkStations()
{
    const QMap<int, int>& actual = PLC_driver.disabledStations;
    m_differences.check("stations switched off", m_model.stationsOff.size(),
                        std::size_t(actual.size()));
    for (int station : m_model.stationsOff)
        m_differences.check("value of a station switched off", 0, actual.value(station, -1));
}

void SideBySide::checkCallbacks()
{
    m_differences.check("callbacks called", m_model.calls.size(), driverCalls.size());
    for (std::size_t i = 0; i < std::min(m_model.calls.size(), driverCalls.size()); ++i) {
        if (m_model.calls[i] == driverCalls[i])
            continue;
        const std::int32_t* expected = m_model.calls[i].argument;
        const std::int32_t* actual = driverCalls[i].argument;
        m_differences.add() << "callback " << i << ": model kind " << m_model.calls[i].kind << " ("
                            << expected[0] << ", " << expected[1] << ", " << expected[2] << ", "
                            << expected[3] << "), driver kind " << driverCalls[i].kind << " ("
                            << actual[0] << ", " << actual[1] << ", " << actual[2] << ", "
                            << actual[3] << ")\n";
    }
    m_model.calls.clear();
    driverCalls.clear();
}

void SideBySide::checkImageByte(ImageModel::Key key, std::uint8_t expected)
{
    const bool exists = PLC_driver.localImage.contains(key);
    const int actual = PLC_driver.localImage.value(key);
    if (exists && actual == expected)
        return;
    std::ostream& difference = m_differences.add();
    difference << "image byte " << std::hex << key << std::dec << ": model " << int(expected)
               << ", driver ";
    if (exists)
        difference << actual << '\n';
    else
        difference << "none\n";
}

void SideBySide::checkWholeImage()
{
    m_differences.check("bytes in the image", m_model.image.bytes().size(),
                        std::size_t(PLC_driver.localImage.size()));
    for (const auto& byte : m_model.image.bytes())
        checkImageByte(byte.first, byte.second);
}

void SideBySide::checkImageKeys()
{
    const QList<quint64> keys = PLC_driver.localImage.keys();
    const auto& bytes = m_model.image.bytes();
    const bool isSame = std::equal(bytes.begin(), bytes.end(), keys.begin(), keys.end(),
                                   [](const auto& byte, quint64 key) { return byte.first == key; });
    m_differences.check("the keys of the image are those of the model", true, isSame);
}

void SideBySide::checkImage()
{
    const auto& bytes = m_model.image.bytes();
    if (bytes.size() <= kSmallImage) {
        checkWholeImage();
        return;
    }
    m_differences.check("bytes in the image", bytes.size(),
                        std::size_t(PLC_driver.localImage.size()));
    for (ImageModel::Key key : m_model.image.touched())
        checkImageByte(key, bytes.at(key));
}

void SideBySide::checkCounters()
{
    m_differences.check("result callback registered", m_model.hasResultCallback,
                        bool(PLC_driver.resultCallback));
    m_differences.check("failure callback registered", m_model.hasFailureCallback,
                        bool(PLC_driver.failureCallback));
    m_differences.check("lastKind", m_model.lastKind, PLC_driver.lastKind);
    m_differences.check("writeTries", m_model.writeTries, PLC_driver.writeTries);
    m_differences.check("onceTries", m_model.onceTries, PLC_driver.onceTries);
    m_differences.check("cycleCount", m_model.cycleCount, PLC_driver.cycleCount);
    m_differences.check("failed", m_model.failed, int(PLC_driver.failed));
    m_differences.check("loggedIn", m_model.loggedIn, PLC_driver.loggedIn);
    m_differences.check("plcInfo1", m_model.plcInfo1, int(PLC_driver.plcInfo1));
    m_differences.check("plcInfo2", m_model.plcInfo2, int(PLC_driver.plcInfo2));
    m_differences.check("entries in the spare lists", 0,
                        int(PLC_driver.spareList.size() + PLC_driver.extendList.size()));
}

} // namespace plc::model
