// List and value calls with any settings: lengths, counts and maxReadBytes from negative to huge.

#include "driver/list_access.h"
#include "fuzz_host.h"
#include "lists/read_list_rebuild.h"
#include "lists/variable_lists.h"

namespace {

using plc::fuzz::FuzzHost;
using plc::fuzz::FuzzInput;
using plc::fuzz::GuardedMemory;
using plc::fuzz::require;

constexpr int kMostCalls = 40;
/// Entries to fold at a time: each may need 65,536 reads, and the list has to fit the memory.
constexpr int kMostFolded = 4;

class ListCalls {
public:
    explicit ListCalls(FuzzInput& input) : m_input(input) {}

    void run()
    {
        m_host.settings.maxReadBytes = m_input.number();
        for (int i = 0; i < kMostCalls && !m_input.isAtEnd(); ++i) {
            step();
            m_host.checkPromises();
            checkLists();
        }
    }

private:
    void step()
    {
        switch (m_input.below(12)) {
            case 0:
                addRead();
                break;
            case 1:
                addWrite();
                break;
            case 2:
            case 3:
                addOnce();
                break;
            case 4:
            case 5:
                rebuild();
                break;
            case 6:
                readValue();
                break;
            case 7:
            case 8:
                writeValue();
                break;
            case 9:
                cutAndFold();
                break;
            case 10:
                m_host.changeSettings(m_input);
                break;
            default:
                transaction();
                break;
        }
    }

    void addRead()
    {
        RW_VAR var = m_host.variable(m_input);
        const int before = int(PLC_driver.readList.size());
        require(AddListReadVar(&var) == before + 1, "a cyclic read is appended");
    }

    void addWrite()
    {
        RW_VAR var = m_host.variable(m_input);
        const int append = m_input.below(3);
        m_isOverfull = m_isOverfull || append == 1;
        const int entries = AddListWriteVar(&var, append);
        require(entries == int(PLC_driver.writeList.size()), "the count is that of the list");
    }

    void addOnce()
    {
        RW_VAR var = m_host.variable(m_input);
        const int append = m_input.below(8) == 1 ? 1 : 0;
        m_isOverfull = m_isOverfull || append == 1;
        const int entries = AddListOnceReadVar(&var, append);
        require(entries == 0 || entries == int(PLC_driver.onceReadList.size()),
                "the count is that of the list");
    }

    void rebuild()
    {
        QList<HostVarItem> items;
        const int count = m_input.below(20);
        for (int i = 0; i < count; ++i) {
            HostVarItem item;
            item.station = quint8(m_input.byte());
            item.label = m_host.label(m_input);
            item.count = m_input.number();
            items.append(item);
        }
        const int entries = ReCreatReadVarList(&items);
        require(entries == int(PLC_driver.readList.size()), "the count is that of the list");
        const int maxReadBytes = m_host.settings.maxReadBytes;
        for (const RW_VAR& read : PLC_driver.readList)
            require(maxReadBytes == 1 || (read.length > 0 && read.length <= maxReadBytes),
                    "a folded read is not empty and not longer than maxReadBytes");
    }

    void readValue()
    {
        QByteArray value("old");
        const int count = m_input.number();
        GetRegisterData(m_host.label(m_input), 0, 0, 0, &value, count);
        require(count > 0 || value.isEmpty(), "nothing asked for is nothing returned");
    }

    void writeValue()
    {
        QByteArray value = m_memory.bytes(m_input.bytes(m_input.byte()));
        const QByteArray before(value.constData(), int(value.size()));
        const int count = m_input.number();
        SetRegisterData(m_host.label(m_input), 0, QString(), m_input.below(4), &value, count,
                        m_input.below(13), m_input.below(4));
        require(value == before, "the host's value is only read");
    }

    void cutAndFold()
    {
        RW_VAR var = m_host.variable(m_input);
        QList<RW_VAR> list;
        const int maxLen = m_input.number();
        WhetherGroup(m_input.number(), maxLen, &var, &list);
        while (list.size() > kMostFolded)
            list.removeLast();
        Bubble_Sort(&list);
        BitVarReCreat(&list, m_input.flag() ? maxLen : m_input.number());
        if (PLC_driver.readList.size() > PLC_MOST_PIECES)
            PLC_driver.readList.clear();
    }

    void transaction()
    {
        const Protocol* request = ComCommunication();
        if (!request)
            return;
        const int service = uchar(request->frame.at(6));
        const int payload = service == 0x01 ? 200 : service == 0x31 ? 30 : 2;
        QByteArray reply(6 + payload, '\0');
        reply[5] = char(uchar(payload));
        QByteArray bytes = m_memory.bytes(reply);
        DataCom(&bytes, int(bytes.size()));
        DataCom(&bytes, int(bytes.size()));
    }

    void checkLists()
    {
        if (m_isOverfull)
            return;
        require(PLC_driver.writeList.size() <= PLC_LIST_LIMIT, "the write list is bounded");
        require(PLC_driver.onceReadList.size() <= PLC_LIST_LIMIT, "the one-shot list is bounded");
    }

    FuzzInput& m_input;
    FuzzHost m_host;
    GuardedMemory m_memory;
    /// Records were appended in any case.
    bool m_isOverfull = false;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    ListCalls(input).run();
    return 0;
}
