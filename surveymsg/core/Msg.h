#pragma once

#include <cstdint>

#include <surveymsg/core/Factory.h>
#include <surveymsg/core/MemberDefinition.h>
#include <surveymsg/outside/FormatRecords.h>
#include <surveymsg/platform/Archive.h>
#include <surveymsg/platform/MapStringToOb.h>
#include <surveymsg/platform/PtrArray.h>
#include <surveymsg/platform/StringArray.h>

/// Base of every typed message: an address on the bus, a time, an encoded form, and the messages that
/// travel inside.
///
/// Results are 1 for success and 0 for failure, unless said otherwise; a null output gives 0. Only the
/// encoding raises anything: `CArchiveException` for bytes that cannot be loaded, `CMemoryException`
/// for a message that does not fit. A program uses all of its messages from one thread at a time: they share
/// what the library knows of formats and of the sizes that messages come in.
///
///     CPosnMsg position;                      CMsg received;
///     position.Name = "ROV";                  received.MsgKey = "PRX~Position";
///     position.East = 431250.0;               received.InstanceIdentifier = "*";
///     position.Send();                        received.Subscribe(0);
///                                             for (;;) {
///                                                 CMsg* message = nullptr;
///                                                 if (!received.Receive(1000)) continue;
///                                                 if (!AllocMsg(received.MsgKey, nullptr, &message)) continue;
///                                                 message->Decode(&received);
///                                                 FreeMsg(message);
///                                             }
class SURVEYMSG_API CMsg : public CObject {
public:
    CMsg();
    CMsg(const CMsg&) = delete;
    ~CMsg() override;

    /// Stores the message to `ar` or loads it from there. A class stores its own share and then calls its
    /// base's operation, as the last thing it does: when messages are nested, what stands behind the base
    /// share would come out of order.
    void Serialize(CArchive& ar) override;

    // --- whole messages --------------------------------------------------------------------------

    /// Copies `source`, of the same class, through its encoded form: `source.Body` is rewritten. Keys,
    /// time, fields and nested messages arrive; nothing is shared.
    virtual CMsg& operator=(CMsg& source);
    /// 1 if both have the same address, all five keys; nothing else is compared.
    virtual int operator==(const CMsg& other) const;
    /// Takes keys, time and `Body` of `source` as they stand and decodes that `Body`. If it is empty or
    /// a key text, the class's fields stay as they were.
    virtual CMsg& operator<<(const CMsg& source);

    /// The class's version as text; 0 with `out` left alone if it has none.
    virtual int GetVersion(CString* out);
    /// The identifier, built first if it is empty; 0 with `out` left alone if the class has none.
    virtual int GetInstanceIdentifier(CString* out);
    /// Builds `InstanceIdentifier`, and `OldInstanceIdentifier` after a rename, from the fields.
    virtual int SetInstanceIdentifier();

    // --- members by number -----------------------------------------------------------------------

    /// Appends a pointer to each row of the class's table and its bases'. The rows stay the library's.
    virtual int GetMemberDefinitions(CPtrArray* rows);
    /// Writes a member as text. `format` is a printf template with one conversion, for angles a degree
    /// format, for times a strftime template; null or empty gives the member's default, and so does one
    /// that does not fit the member. `index` picks the element of a "[]" member, from 0; past the last
    /// one the result is 1 and `out` is left as it was.
    virtual int FormatString(std::uint16_t id, std::uint16_t index, const char* format, CString* out);
    /// Copies a member's raw value, at most its `Width` bytes. A text of 256 characters or more gives
    /// its first 256 without a terminator, a shorter one has it. "Type" of a position is a text of up to
    /// 16 bytes in spite of its width.
    virtual int MemberCopy(std::uint16_t id, std::uint16_t index, void* out);
    /// Reads a number; 0 for members that are none.
    virtual int GetMemberValue(std::uint16_t id, std::uint16_t index, double* out);
    /// Stores a number. Integers take it truncated toward zero, keeping as many low bits as they have.
    virtual int SetMemberValue(std::uint16_t id, std::uint16_t index, double value);

    // --- time ------------------------------------------------------------------------------------

    virtual void UpdateTime();       ///< `MsgTime` takes the clock
    double Age();                    ///< seconds since `MsgTime`
    static double TimeGetSeconds();  ///< now, in seconds since 1980-01-06 UTC

    // --- text forms ------------------------------------------------------------------------------

    /// Writes a bare number: an angle if `format` holds a degree token, one character for exactly "%c",
    /// else by a printf template with one conversion; null gives "%f". `out` must not be null.
    static void FormatString(double value, const char* format, CString* out);
    /// 0 if `format` asks for a text argument, else 1.
    static int ValidNumberFormat(const char* format);

    // --- bytes -----------------------------------------------------------------------------------

    /// Fills `Body` from the fields. What `Body` held is overwritten, unless the class writes nothing.
    /// Raises `CMemoryException` if 122,880 bytes do not hold the message.
    int Encode();
    /// Fills the fields from the `Body` of `other`, or of this message. 0, with nothing changed, if there
    /// are no bytes or `BodyIsKeyText` is set here. A failure that is raised leaves what was read by then.
    int Decode(CMsg* other = nullptr);

    // --- nested messages -------------------------------------------------------------------------

    /// Adopts a message made by `AllocMsg` or with `new`: 1, and it is released with this one. If its
    /// identifier is stored already, the stored message takes the content, and the given one stays the
    /// caller's. 0 if it has been stored before, here or elsewhere, is this message, or owns it. The
    /// identifier is the one that the message has; one that is used again after a change of its fields
    /// needs `SetInstanceIdentifier` first.
    int AddMsgDependency(CMsg* message);
    /// Stores a copy; the given message stays the caller's, but its `Body` is rewritten. 0 if `AllocMsg`
    /// does not know its key.
    int AddMsgDependency(CMsg& message);
    /// Releases the stored message that has the identifier of `message`; 0 if there is none.
    int RemoveMsgDependency(CMsg* message);
    void RemoveAllMsgDependencies();

    // --- the bus ---------------------------------------------------------------------------------

    /// Announces `MsgKey` and `InstanceIdentifier` to the bus, once per process, with the format of a raw
    /// record if one is given.
    int Publish(const msgfmt* format = nullptr);
    void Unpublish();
    void Unpublish(const CString& identifier);
    /// Stamps the time, builds the identifier, encodes, publishes if need be, retires an old name with a
    /// last message, and sends. The result is the bus's.
    int Send();
    /// Waits up to `wait` milliseconds (0xFFFFFFFF: for ever) and reads the next message, of whatever
    /// class, into the keys and `Body`; it is not decoded. 0 with nothing changed if none came.
    int Receive(std::uint32_t wait);
    /// Reads without waiting. If the read fails, the texts among the keys and `Body` are empty.
    int OnReceive();
    /// Asks for messages with this `MsgKey` and `InstanceIdentifier` from any sender.
    int Subscribe(std::uint16_t value);
    int Unsubscribe();

    // --- key texts -------------------------------------------------------------------------------

    /// Writes the five keys as one text, in the bus's form; empty if they need more than 255 characters.
    /// `out` must not be null.
    void CombineKeys(CString* out);
    /// Takes the five keys from such a text. Null takes `Body` as the text and keeps `Decode` from
    /// reading it from then on. 0 with the keys left alone if it is none.
    int ExtractKeys(const char* text);
    /// The same for `*text`; if that is null it receives `Body`'s storage.
    int ExtractKeys(const char** text);
    /// Splits "source->target" at its first arrow. Without one all is source. 0 for an empty text.
    static int ExtractSourceAndTarget(const CString& text, CString* source, CString* target);

    // --- fields ----------------------------------------------------------------------------------

    double MsgTime;                  ///< seconds since 1980-01-06 UTC; the one header field in the bytes
    CString MsgKey;                  ///< what kind of message this is; the class's constructor sets it
    CString SourceNode;              ///< sender's machine; filled in by the bus on receipt
    CString SourceTask;              ///< sender's program; filled in by the bus on receipt
    std::uint32_t SourceNumber = 0;  ///< sender's instance; filled in by the bus on receipt
    CString InstanceIdentifier;      ///< which instance of `MsgKey` this is
    CString OldInstanceIdentifier;   ///< the identifier before a rename, or empty
    CString Body;                    ///< the encoded form, as the last `Encode` or receipt left it
    CMapStringToOb MsgDependencies;  ///< nested messages by identifier, owned by this message
    int BodyIsKeyText = 0;           ///< set once `ExtractKeys` has used `Body`

protected:
    int Published(const CString& identifier);  ///< non-zero if this process has published the pair

    /// Renders a time as UTC through strftime, 79 characters at most; 0.0 means `MsgTime`, null or empty
    /// gives "%H:%M:%S %d %b %y". 0 with an empty `out` if nothing comes out.
    int FormatTime(const char* format, CString* out, double time);
    static int SpecialDegreesFormat(CString format);  ///< 1 if `format` holds "DEG%", "MIN%" or "SEC%"
    /// Writes an angle by a degree format such as `DEG%03.0f MIN%02.0f SEC%05.2f E`.
    static void FormatDegrees(CString& out, const char* format, double value);

    /// Whether `message` is nested in this one, at any depth.
    bool Owns(const CMsg& message) const;

private:
    friend class surveymsg::detail::Nesting;

    void StoreNested(CArchive& ar);
    void LoadNested(CArchive& ar, std::int32_t count);
    void AdoptLoaded(CMsg* message);
    int StoreDependency(CString identifier, CMsg* message);

    CMsg* nextReleased_ = nullptr;  // links the messages of a tree that is being released
    bool isStored_ = false;         // a message owns this one
};
