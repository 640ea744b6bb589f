/**
 * @file plc_driver.h
 * @brief Host interface of the PLC communication driver.
 *
 * The driver exchanges process data with a PLC of the ABB AC500 family in the
 * CODESYS block protocol. It owns no socket, timer or thread: the host asks
 * for the next request frame (ComCommunication()), sends it, and hands the
 * reply back (DataCom()). Values are read and written by label at any time in
 * between.
 *
 * Threads: ComCommunication() and DataCom() are called from one thread only,
 * the communication thread. AddListWriteVar(), AddListOnceReadVar(),
 * ReCreatReadVarList(), EnCommStation(), EnableEthernet(), GetRegisterData()
 * and SetRegisterData() may be called from any thread. AddListReadVar() and
 * PassVarName_2() take no lock: the first must not run beside the
 * communication thread or beside ReCreatReadVarList(), the second beside
 * anything that resolves labels. DataCom() stores a remote reply (see
 * RW_VAR::aux12) without a lock: where there are such, values are read and
 * written on the communication thread alone. All other calls belong to the
 * set-up, before traffic starts. The callbacks run inside DataCom() and call
 * none of the driver's functions, ComCommunication() included.
 *
 * Layouts: members stand in the order that host and driver agree on; neither
 * order nor types may change. Every pointer stays owned by the side that
 * created what it points to.
 */
#ifndef PLC_DRIVER_H
#define PLC_DRIVER_H

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QtGlobal>

/** Marks what the shared library exports; everything else is hidden in it. */
#define PLC_DRIVER_EXPORT __attribute__((visibility("default")))

/**
 * Bytes that one value has at most: 16 MiB, far above any PLC memory area. What
 * is larger is a mistake of the host and costs neither memory nor traffic:
 * GetRegisterData() gives 0 and an empty buffer, SetRegisterData() stores and
 * queues nothing and gives 0, the read lists get no entry. AddListWriteVar()
 * takes its record as it is; the request then states the length without value
 * bytes, and the image keeps the value that it has.
 */
const int PLC_LARGEST_VALUE = 16 * 1024 * 1024;

/**
 * Pieces that one variable falls into at most where it is cut: reads by
 * ComInfo::maxReadBytes, queued writes into 1000 bytes or single bits. What would
 * fall into more is refused like a value above PLC_LARGEST_VALUE.
 */
const int PLC_MOST_PIECES = 65536;

/** One variable access: where, how much, for which host request, and the value bytes. */
struct RW_VAR {
    /** Request category of the host; 1 to 11 shift the failure numbers by category + 1. */
    int category = 0;
    /** Operation tag of the host; with @ref category it identifies one host request. */
    int aux1 = 0;
    /** 0: reply data is stored in the image; anything else: it is only acknowledged. */
    int aux2 = 0;
    /** Copy of ComInfo::remoteMode; carried, not tested. */
    int aux3 = 0;
    /** Device number; ComInfo::localDeviceNo routes replies to the local area. */
    int deviceNo = 0;
    /** Outcome of the last reply in the record that DataCom() returns; see there. */
    int result = 0;
    /** Label of the variable: scope, dot, variable, subscripts, members. */
    QString label;
    /** Second label of the host; carried. */
    QString subLabel;
    /** Type code 1 to 17; 13 is a bit, whose address counts bits. */
    int dataType = 0;
    /** Start address in bytes within the area (in bits for type code 13). */
    int address = 0;
    /** PLC station number; no frame carries it. It only filters what is asked for. */
    int station = 0;
    /** Bytes to read or write (bits for type code 13, one data byte each). */
    int length = 0;
    /** Remote marker: other than -1, the remote reply handler stores nothing. */
    int aux12 = 0;
    /** Memory area index; its low 16 bits are sent. */
    int areaIndex = 0;
    /** Value bytes in PLC order (most significant byte first). */
    QByteArray data;
};

/** One queued request: the frame, what is expected in reply, and the variable it serves. */
struct Protocol {
    /** The complete request frame. */
    QByteArray frame;
    /** Size of @ref frame in bytes. */
    int frameLength = 0;
    /** Expected reply size in bytes; -1: the reply's own length field decides. */
    int replyLength = 0;
    /** Position in the reply of the first data block. */
    int dataOffset = 0;
    /** Smallest reply size in bytes that the login accepts. */
    int minReplyLength = 0;
    /** Copy of the first variable of the batch that the frame carries. */
    RW_VAR var;
    /** Carried; neither set nor read by the driver. */
    int extra1 = 0;
    /** Carried; neither set nor read by the driver. */
    int extra2 = 0;
    /** Carried; neither set nor read by the driver. */
    int extra3 = 0;
};

/** Element of a list that the driver object holds for the host; the driver never reads it. */
struct EXTENDVAR {
    int ext1 = 0;       /**< Carried. */
    int ext2 = 0;       /**< Carried. */
    int ext3 = 0;       /**< Carried. */
    QByteArray extData; /**< Carried. */
};

/**
 * The host's settings record: a sequence of 32-bit integers owned by the host,
 * to which the driver keeps a pointer from SetComInfo() on. The words named
 * `hostWord…` are the host's own; a host may append further words.
 */
struct ComInfo {
    qint32 hostWord0 = 0; /**< Word 0, the host's own. */
    qint32 hostWord1 = 0; /**< Word 1, the host's own. */
    qint32 hostWord2 = 0; /**< Word 2, the host's own. */
    qint32 hostWord3 = 0; /**< Word 3, the host's own. */
    /** Word 4: bytes of one read entry at most, above 0; 1 merges nothing. Set by the host. */
    qint32 maxReadBytes = 0;
    qint32 hostWord5 = 0; /**< Word 5, the host's own. */
    /** Word 6: station of every variable while @ref multiStation is 0. Set by the host. */
    qint32 defaultStation = 0;
    /** Word 7: failed replies tolerated before a transaction is abandoned. Set by the host. */
    qint32 retryLimit = 0;
    /**
     * Word 8: failed replies so far. The driver counts and sets it to 0 at a
     * final failure only; a host that wants no failures to add up sets it to 0
     * after a good transaction.
     */
    qint32 retryCount = 0;
    /** Word 9: not 0: variables keep their own station. Set by the host. */
    qint32 multiStation = 0;
    /** Word 10: set to 0 by SetComInfo(). */
    qint32 comWord10 = 0;
    /** Word 11: frames of the current transaction. Set by the driver. */
    qint32 frameCount = 0;
    /** Word 12: frames of it answered so far. Set by the driver. */
    qint32 frameIndex = 0;
    /** Word 13: set to 0 by SetComInfo(). */
    qint32 comWord13 = 0;
    /** Word 14: not 0: no frames are built. Set by the host. */
    qint32 remoteMode = 0;
    /** Word 15: device number whose replies belong to the local area. Set by the host. */
    qint32 localDeviceNo = 0;
    /** Word 16: 2: writes are queued to the PLC; anything else: image only. Set by the host. */
    qint32 writeMode = 0;
    /**
     * Word 17: 1 after a full pass or when there is nothing to send, 0 after a
     * final failure and after ReCreatReadVarList(). It belongs to one thread,
     * the communication thread: a host that looks at it calls
     * ReCreatReadVarList() there, too.
     */
    qint32 scanDone = 0;
    /** Word 18: first argument of the result callback. Set by the host. */
    qint32 hostTag = 0;
};

/**
 * One symbol: a scope, a variable, a structure definition or a member of one.
 *
 * A scope is a top-level record whose `typeDef` holds one record with the
 * scope's variables as `members`. A variable of type code 12 has in its
 * `typeDef` the structure definition: bit 9 set, `offset` the size of one
 * element, `members` its members. The host keeps: `memberCount` is not above
 * the size of `members`; a scope and a structured record have a `typeDef`; an
 * array's `arrayBounds` holds 1 + 2 × `dimCount` numbers. What breaks this
 * does not resolve.
 */
struct Label_Type_Info {
    /** Name, compared exactly; the scope of labels that begin with "." has the empty name. */
    QString name;
    /** Bits 0 to 7: type code; bit 8: array; bit 9: structure definition. */
    quint16 typeFlags = 0;
    /** Variable: address in its area (bytes; bits for code 13). Member: bytes from the start of
     * the structure. Structure definition: bytes of one element. */
    qint32 offset = 0;
    /** Array dimensions. */
    qint32 dimCount = 0;
    /** Records at the front of @ref members that are searched by name. */
    quint32 memberCount = 0;
    /** Number base of the subscripts, then lower and upper bound of each dimension. */
    QList<int> arrayBounds;
    /** Members of a structure definition or variables of a scope. */
    QList<Label_Type_Info> members;
    /** The type of the record; only the first element is used. */
    QList<Label_Type_Info> typeDef;
    QString hostText;         /**< Carried for the host. */
    qint32 hostValue1 = 0;    /**< Carried for the host. */
    qint32 hostValue2 = 0;    /**< Carried for the host. */
    QList<int> areaInfo;      /**< Element 0: memory area index of a scope's variable. */
    QList<QString> hostTexts; /**< Carried for the host. */
};

/** One cyclically read variable as the host lists it for ReCreatReadVarList(). */
struct HostVarItem {
    /** Station number; counts only while ComInfo::multiStation is not 0. */
    quint8 station = 0;
    qint32 hostWord1 = 0; /**< The second word, the host's own. */
    QString subLabel;     /**< Second label; carried. */
    QString label;        /**< Label of the variable. */
    /** Size in the host's units: 16-bit registers, or elements for 1-byte types and bits. */
    qint32 count = 0;
};

/**
 * Outcome of a queued write or one-shot read, once for all pieces of one
 * (@p category, @p aux1). Called inside DataCom() with the list lock held;
 * calls none of the driver's functions.
 *
 * @param hostTag  ComInfo::hostTag
 * @param category RW_VAR::category of the request
 * @param aux1     RW_VAR::aux1 of the request
 * @param status   1 done, 2 failed
 */
typedef void (*PlcResultCallback)(int hostTag, int category, int aux1, int status);

/**
 * Final failure of a transaction. Called inside DataCom() with the list lock
 * held; calls none of the driver's functions.
 *
 * @param list     an empty list, owned by the driver
 * @param category RW_VAR::category of the failed variable
 * @param mode     always 1
 */
typedef void (*PlcFailureCallback)(QList<RW_VAR>* list, int category, int mode);

extern "C" {

/**
 * Stores the host's settings record and sets its words 10 and 13 to 0.
 *
 * @param info stays owned by the host and must live until it is replaced; null
 *             is stored as it is and stops all traffic
 */
PLC_DRIVER_EXPORT void SetComInfo(ComInfo* info);

/**
 * Stores the two callbacks; null is allowed and means not called.
 *
 * @param callback1 called with the outcome of queued writes and one-shot reads
 * @param callback2 called when a transaction is abandoned
 */
PLC_DRIVER_EXPORT void RegistCallBackFuncIntf(PlcResultCallback callback1,
                                              PlcFailureCallback callback2);

/**
 * Stores pointers to the host's own memories in the globals LB, LW and RWI.
 *
 * @param lb  stored in LB
 * @param lw  stored in LW
 * @param rwi stored in RWI
 * @return the address of the global LW (not its value)
 */
PLC_DRIVER_EXPORT void** FlashLocalRegister(void* lb, void* lw, void* rwi);

/** @return 1, always */
PLC_DRIVER_EXPORT int QueryFinishFlag();

/**
 * Switches a station off or on. Writes and one-shot reads of a station that is
 * off are dropped when they reach the head of their list; its cyclic reads are
 * skipped.
 *
 * @param station station number; negative: all stations on, whatever @p enable
 * @param enable  0 off, 1 on, other values change nothing
 */
PLC_DRIVER_EXPORT void EnCommStation(int station, int enable);

/**
 * The same as EnCommStation().
 *
 * @param station see there
 * @param enable  see there
 */
PLC_DRIVER_EXPORT void EnableEthernet(int station, int enable);

/**
 * Copies the host's symbols into the symbol table. A record replaces an earlier
 * one of the same name; an empty list changes nothing.
 *
 * @param list top-level records (scopes); stays owned by the host
 */
PLC_DRIVER_EXPORT void PassVarName_2(QList<Label_Type_Info>* list);

/**
 * Address of a label within its memory area.
 *
 * @param reserved not used
 * @param label    label of the variable
 * @return the address in bytes (in bits for type code 13), or -1
 */
PLC_DRIVER_EXPORT int PLCAddressChangeIntef(int reserved, QString label);

/**
 * Appends @p var to the cyclic read list as it is. Takes no lock: never beside
 * the communication thread or ReCreatReadVarList().
 *
 * @param var copied into the list
 * @return entries in the list afterwards; 0 for null
 */
PLC_DRIVER_EXPORT int AddListReadVar(RW_VAR* var);

/**
 * Queues a write: address, length and data as they are to be sent.
 *
 * @param var    copied into the list
 * @param append 1: append in any case; other values: an entry of the same
 *               station, address and length behind the head is replaced, and a
 *               new one is dropped once the list holds 1024
 * @return entries in the list afterwards; 0 for null
 */
PLC_DRIVER_EXPORT int AddListWriteVar(RW_VAR* var, int append);

/**
 * Queues a one-shot read.
 *
 * @param var    on entry `length` is a count in the host's units; unless
 *               @p append is 1 the label is resolved, the record is converted,
 *               and it is left as its last piece with the address behind it
 * @param append 1: append the record as it is; other values: convert, cut into
 *               pieces of ComInfo::maxReadBytes, and add what is not queued yet
 *               while the list holds fewer than 1024
 * @return entries in the list afterwards; 0 if the record was refused, for
 *         @ref PLC_LARGEST_VALUE and @ref PLC_MOST_PIECES as well
 */
PLC_DRIVER_EXPORT int AddListOnceReadVar(RW_VAR* var, int append);

/**
 * Replaces the cyclic read list by entries that cover @p vars: grouped by area,
 * sorted by address, merged up to ComInfo::maxReadBytes. What does not resolve
 * and what is above a limit is skipped. The labels are resolved before the list
 * is locked.
 *
 * @param vars the variables to read; left as they are
 * @return entries in the list afterwards
 */
PLC_DRIVER_EXPORT int ReCreatReadVarList(QList<HostVarItem>* vars);

/**
 * The next request to send.
 *
 * @return the request at the head of the queue, or null when there is nothing
 *         to send; owned by the driver, valid until the next call of
 *         ComCommunication() or DataCom()
 */
PLC_DRIVER_EXPORT Protocol* ComCommunication();

/**
 * Takes the reply to the request that ComCommunication() returned last.
 *
 * While Protocol::replyLength is -1 the call that sees a complete frame records
 * its size and returns 1; the reply is handed over once more to be consumed.
 *
 * @param reply    bytes received so far; empty or null: nothing arrived in time
 * @param received number of bytes received
 * @return the driver's reply record, valid until the next call. Its `result`:
 *         1 or 100 accepted (local or remote area); 0 not finished, more bytes
 *         or a retry are due; 201 login refused; 200 no settings record; 41, 71
 *         and other numbers: the transaction was abandoned
 */
PLC_DRIVER_EXPORT RW_VAR* DataCom(QByteArray* reply, int received);

/**
 * Reads a value from the image of PLC memory; never waits and never sends.
 *
 * @param label     label of the variable
 * @param reserved1 not used
 * @param reserved2 not used
 * @param reserved3 not used
 * @param value     replaced by the value, least significant byte first
 * @param count     16-bit registers wanted (elements for type codes 1 and 13)
 * @return 1, or 0 with 2 × @p count zero bytes when the label does not resolve,
 *         or 0 with an empty buffer above @ref PLC_LARGEST_VALUE
 */
PLC_DRIVER_EXPORT int GetRegisterData(const QString& label, int reserved1, int reserved2,
                                      int reserved3, QByteArray* value, int count);

/**
 * Writes a value: into the image only, or (ComInfo::writeMode 2) converted to
 * the PLC's byte order and queued. The outcome of a queued write comes through
 * the result callback with @p category and @p aux1.
 *
 * @param label    label of the variable
 * @param reserved not used
 * @param subLabel carried in the write record
 * @param station  PLC station; counts only while ComInfo::multiStation is not 0
 * @param value    value bytes, least significant byte first; read only
 * @param count    16-bit registers (elements for type codes 1 and 13)
 * @param category request category; see RW_VAR::category
 * @param aux1     operation tag of the host
 * @return 1 when the image was written; 0 when the write was queued, and 0 as
 *         well when the label does not resolve or the value is above a limit
 */
PLC_DRIVER_EXPORT int SetRegisterData(const QString& label, int reserved, const QString& subLabel,
                                      int station, QByteArray* value, int count, int category,
                                      int aux1);

/** The host memory pointers that FlashLocalRegister() stores. */
PLC_DRIVER_EXPORT extern void* LB;
PLC_DRIVER_EXPORT extern void* LW;  /**< See LB. */
PLC_DRIVER_EXPORT extern void* RWI; /**< See LB. */
}

#endif
