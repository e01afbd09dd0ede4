// Bytes of a message, for every class: they load or fail as documented, every member operation holds, and
// the same object then takes a good body.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include <surveymsg/surveymsg.h>

namespace {

template <class Message>
std::unique_ptr<CMsg> Make() {
    return std::make_unique<Message>();
}

// In the order of the first byte of an input; see the seeds in `./dev`.
constexpr std::unique_ptr<CMsg> (*kMakers[])() = {
    Make<CMsg>,         Make<CObsMsg>,           Make<CAcObsMsg>,    Make<CPosnMsg>,
    Make<CCompPosnMsg>, Make<CProfProcessedMsg>, Make<CPosnListMsg>, Make<CTargMsg>,
    Make<CTransMsg>,    Make<CMobTransMsg>,      Make<CTransRange>,  Make<CCopMsg>,
};

void Require(bool holds) {
    if (!holds) std::abort();
}

bool Loads(CMsg& message, CMsg& carrier) {
    try {
        return message.Decode(&carrier) == 1;
    } catch (const CArchiveException& failure) {
        Require(failure.m_cause == CArchiveException::badSchema || failure.m_cause == CArchiveException::endOfFile);
        return false;
    }
}

void UseEveryMember(CMsg& message) {
    CPtrArray rows;
    message.GetMemberDefinitions(&rows);
    for (int i = 0; i < rows.GetSize(); ++i) {
        const auto& row = *static_cast<const MemberDefinition*>(rows[i]);
        for (const std::uint16_t index : {std::uint16_t{0}, std::uint16_t{1}, std::uint16_t{7}, std::uint16_t{65535}}) {
            CString text;
            message.FormatString(row.Id, index, nullptr, &text);
            // The type of a position is a text of 16 bytes whatever its width says.
            std::vector<char> copy(row.Width < 16 ? 16u : row.Width);
            message.MemberCopy(row.Id, index, copy.data());
            double value = 0.0;
            if (message.GetMemberValue(row.Id, index, &value)) message.SetMemberValue(row.Id, index, value);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const auto make = kMakers[data[0] % std::size(kMakers)];
    const auto message = make();
    CMsg carrier;
    carrier.Body = CString(reinterpret_cast<const char*>(data + 1), static_cast<int>(size - 1));
    if (Loads(*message, carrier)) {
        UseEveryMember(*message);
        try {
            message->Encode();
            const auto again = make();
            Require(Loads(*again, *message));
            again->Encode();
            Require(again->Body == message->Body);
        } catch (const CMemoryException&) {
            // More than an encoded message can hold.
        }
    }
    const auto good = make();
    good->Encode();
    Require(Loads(*message, *good));
    return 0;
}
