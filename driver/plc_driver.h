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

/** @name Results of DataCom()
 * RW_VAR::result of the record that it returns. The six failures that name a cause are told as base
 * + shift: RW_VAR::category of the batch's head + 1 for the categories from
 * @ref PLC_FIRST_SHIFTING_CATEGORY to @ref PLC_LAST_SHIFTING_CATEGORY, else 1. */
/**@{*/
/** More bytes are due, or the request is sent once more. */
const int PLC_RESULT_NOT_FINISHED = 0;
/** Accepted (local area), or nothing waited, or the size of the reply was noted. */
const int PLC_RESULT_ACCEPTED = 1;
/** Accepted, from the remote area. */
const int PLC_RESULT_REMOTE_ACCEPTED = 100;
/** Abandoned: no bytes came for a request whose reply size was open. Never shifted. */
const int PLC_RESULT_NO_BYTES = 41;
/** Abandoned: empty or no whole frame in reply to a repeated request. Never shifted. */
const int PLC_RESULT_FRAME_LENGTH_WRONG = 71;
/** There is no settings record. */
const int PLC_RESULT_NO_SETTINGS = 200;
/** The PLC refused the login. */
const int PLC_RESULT_LOGIN_REFUSED = 201;
/** Base: refused (status not 0) or malformed, local area. */
const int PLC_RESULT_REFUSED_BASE = 10;
/** Base: nothing received, local area. */
const int PLC_RESULT_NOTHING_RECEIVED_BASE = 40;
/** Base: number of bytes other than expected, local area. */
const int PLC_RESULT_LENGTH_WRONG_BASE = 70;
/** Base: refused or malformed, remote area. */
const int PLC_RESULT_REMOTE_REFUSED_BASE = 110;
/** Base: nothing received, remote area. */
const int PLC_RESULT_REMOTE_NOTHING_RECEIVED_BASE = 140;
/** Base: number of bytes other than expected, remote area. */
const int PLC_RESULT_REMOTE_LENGTH_WRONG_BASE = 170;
/** First category that shifts a base by more than 1. */
const int PLC_FIRST_SHIFTING_CATEGORY = 1;
/** Last category that shifts a base by more than 1. */
const int PLC_LAST_SHIFTING_CATEGORY = 11;
/**@}*/

/** @name Arguments of the callbacks */
/**@{*/
/** `status` of PlcResultCallback: carried out. */
const int PLC_STATUS_DONE = 1;
/** `status` of PlcResultCallback: given up. */
const int PLC_STATUS_FAILED = 2;
/** `mode` of @ref PlcFailureCallback, always. */
const int PLC_FAILURE_MODE = 1;
/**@}*/

/** @name Values of settings and arguments
 * Where only one number has a meaning of its own, every other number means the same as the one that
 * is named beside it. */
/**@{*/
/** ComInfo::writeMode: SetRegisterData() changes the image only. */
const int PLC_WRITE_MODE_IMAGE = 0;
/** ComInfo::writeMode: SetRegisterData() queues writes to the PLC. */
const int PLC_WRITE_MODE_QUEUE = 2;
/** `append` of AddListWriteVar() and AddListOnceReadVar(): only what is not queued yet. */
const int PLC_APPEND_NEW = 0;
/** `append` of AddListWriteVar() and AddListOnceReadVar(): in any case, as it is. */
const int PLC_APPEND_ALWAYS = 1;
/** `enable` of EnCommStation(): off. */
const int PLC_STATION_OFF = 0;
/** `enable` of EnCommStation(): on. */
const int PLC_STATION_ON = 1;
/** `station` of EnCommStation(): all stations on. No station is switched off under it. */
const int PLC_ALL_STATIONS = -1;
/** Protocol::replyLength: the reply's own length field decides. */
const int PLC_REPLY_LENGTH_OPEN = -1;
/**@}*/

/** @name Kinds of requests
 * What a host writes into its own records, and finds in those that the driver makes. */
/**@{*/
/** RW_VAR::aux1 of cyclic reads: they belong to no host request. */
const int PLC_NO_HOST_REQUEST = -1;
/** RW_VAR::aux2 of reads: the reply's data is stored. */
const int PLC_REPLY_STORED = 0;
/** RW_VAR::aux2 of writes: the reply is only acknowledged. */
const int PLC_REPLY_ACKNOWLEDGED = 1;
/** RW_VAR::aux12 of remote requests whose replies are stored. */
const int PLC_REMOTE_STORED = -1;
/**@}*/

/** @name Type codes
 * RW_VAR::dataType, and bits 0 to 7 of Label_Type_Info::typeFlags. The names are those of the IEC
 * 61131-3 type that hosts mostly use a code for; size and layout are what counts. */
/**@{*/
const int PLC_TYPE_BOOL = 1;       /**< 1 byte, zero or not. */
const int PLC_TYPE_BYTE = 2;       /**< 1 byte. */
const int PLC_TYPE_INT = 3;        /**< 2 bytes. */
const int PLC_TYPE_UINT = 4;       /**< 2 bytes. */
const int PLC_TYPE_DINT = 5;       /**< 4 bytes. */
const int PLC_TYPE_UDINT = 6;      /**< 4 bytes. */
const int PLC_TYPE_REAL = 7;       /**< 4 bytes. */
const int PLC_TYPE_LREAL = 8;      /**< 8 bytes. */
const int PLC_TYPE_LWORD = 9;      /**< 8 bytes; LINT and ULINT as well. */
const int PLC_TYPE_STRING = 10;    /**< Bytes whose order is kept. */
const int PLC_TYPE_WSTRING = 11;   /**< Bytes whose order is kept. */
const int PLC_TYPE_STRUCTURE = 12; /**< As large as its definition says. */
const int PLC_TYPE_BIT = 13;       /**< 1 bit; addresses count bits. */
const int PLC_TYPE_SINT = 14;      /**< 1 byte. */
const int PLC_TYPE_USINT = 15;     /**< 1 byte. */
const int PLC_TYPE_WORD = 16;      /**< 2 bytes; what bits are read as. */
const int PLC_TYPE_DWORD = 17;     /**< 4 bytes; TIME as well. */
/** Bits of Label_Type_Info::typeFlags that hold the type code. */
const int PLC_TYPE_CODE_MASK = 0x00FF;
/** Bit of Label_Type_Info::typeFlags: an array. */
const int PLC_TYPE_ARRAY = 0x0100;
/** Bit of Label_Type_Info::typeFlags: a structure definition. */
const int PLC_TYPE_STRUCTURE_DEFINITION = 0x0200;
/** Bytes from one element of an array of strings to the next. */
const int PLC_STRING_DISTANCE = 255;
/**@}*/

/** @name Limits */
/**@{*/
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
 * ComInfo::maxReadBytes, queued writes into @ref PLC_WRITE_PIECE bytes or single bits. What would
 * fall into more is refused like a value above PLC_LARGEST_VALUE.
 */
const int PLC_MOST_PIECES = 65536;

/** Bytes of one piece of a write that SetRegisterData() queues, at most. */
const int PLC_WRITE_PIECE = 1000;

/** Entries from which on the write list and the one-shot list take no new one; PLC_APPEND_ALWAYS
 * does not ask. */
const int PLC_LIST_LIMIT = 1024;

/** Most entries of one write request. */
const int PLC_MOST_WRITE_ENTRIES = 150;
/** Most entries of one read request. */
const int PLC_MOST_READ_ENTRIES = 99;
/** What the lengths of a request's entries add up to at most, each with its overhead, if it has
 * more than one entry. */
const int PLC_REQUEST_BUDGET = 999;
/** What an entry of a write request counts beside its length. */
const int PLC_WRITE_ENTRY_OVERHEAD = 10;
/** What an entry of a read request counts beside its length. */
const int PLC_READ_ENTRY_OVERHEAD = 1;
/** Write requests in a row, and one-shot reads in a row, before the other lists get their turn. */
const int PLC_REQUESTS_IN_A_ROW = 5;
/**@}*/

/** One variable access: where, how much, for which host request, and the value bytes. */
struct RW_VAR {
    /** Request category of the host; 1 to 11 shift the failure numbers by category + 1. */
    int category = 0;
    /** Operation tag of the host; with @ref category it identifies one host request. */
    int aux1 = 0;
    /** PLC_REPLY_STORED: reply data is stored in the image; anything else: it is only
     * acknowledged. */
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
    /** Type code, @ref PLC_TYPE_BOOL to @ref PLC_TYPE_DWORD. */
    int dataType = 0;
    /** Start address in bytes within the area (in bits for type code 13). */
    int address = 0;
    /** PLC station number; no frame carries it. It only filters what is asked for. */
    int station = 0;
    /** Bytes to read or write (bits for type code 13, one data byte each). */
    int length = 0;
    /** Remote marker: other than @ref PLC_REMOTE_STORED, the remote reply handler stores nothing.
     */
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
    /** Expected reply size in bytes, or @ref PLC_REPLY_LENGTH_OPEN. */
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
    /** Word 16: PLC_WRITE_MODE_QUEUE: writes are queued to the PLC; anything else: image only.
     * Set by the host. */
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
 * @param status   @ref PLC_STATUS_DONE or @ref PLC_STATUS_FAILED
 */
typedef void (*PlcResultCallback)(int hostTag, int category, int aux1, int status);

/**
 * Final failure of a transaction. Called inside DataCom() with the list lock
 * held; calls none of the driver's functions.
 *
 * @param list     an empty list, owned by the driver
 * @param category RW_VAR::category of the failed variable
 * @param mode     @ref PLC_FAILURE_MODE
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
 * @param enable  @ref PLC_STATION_OFF, @ref PLC_STATION_ON; other values change nothing
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
 * @param append PLC_APPEND_ALWAYS: append in any case; other values: an entry of the same
 *               station, address and length behind the head is replaced, and a
 *               new one is dropped once the list holds @ref PLC_LIST_LIMIT
 * @return entries in the list afterwards; 0 for null
 */
PLC_DRIVER_EXPORT int AddListWriteVar(RW_VAR* var, int append);

/**
 * Queues a one-shot read.
 *
 * @param var    on entry `length` is a count in the host's units; unless
 *               @p append is @ref PLC_APPEND_ALWAYS the label is resolved, the record is converted,
 *               and it is left as its last piece with the address behind it
 * @param append PLC_APPEND_ALWAYS: append the record as it is; other values: convert, cut
 *               into pieces of ComInfo::maxReadBytes, and add what is not queued yet
 *               while the list holds fewer than @ref PLC_LIST_LIMIT
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
 * While Protocol::replyLength is @ref PLC_REPLY_LENGTH_OPEN the call that sees a complete frame
 * records its size and returns 1; the reply is handed over once more to be consumed.
 *
 * @param reply    bytes received so far; empty or null: nothing arrived in time
 * @param received number of bytes received
 * @return the driver's reply record, valid until the next call. Its `result`:
 *         @ref PLC_RESULT_ACCEPTED, @ref PLC_RESULT_REMOTE_ACCEPTED,
 *         @ref PLC_RESULT_NOT_FINISHED, @ref PLC_RESULT_LOGIN_REFUSED or
 *         @ref PLC_RESULT_NO_SETTINGS; any other number: the transaction was abandoned
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
 * Writes a value: into the image only, or (@ref PLC_WRITE_MODE_QUEUE) converted to
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
