#include <typeinfo>
#include <utility>
#include <vector>

#include <surveymsg/core/Msg.h>
#include <surveymsg/core/detail/Nesting.h>
#include <surveymsg/core/detail/Share.h>
#include <surveymsg/platform/detail/Memory.h>

namespace {

CMsg* NestedAt(const CMapStringToOb& messages, int index) { return static_cast<CMsg*>(messages.GetAt(index)); }

CMsg* Find(const CMapStringToOb& messages, const CString& identifier) {
    CObject* found = nullptr;
    return messages.Lookup(identifier, found) ? static_cast<CMsg*>(found) : nullptr;
}

CString IdentifierOf(CMsg& message) {
    CString identifier;
    message.GetInstanceIdentifier(&identifier);
    return identifier;
}

}  // namespace

bool CMsg::Owns(const CMsg& message) const {
    if (MsgDependencies.IsEmpty()) return false;
    return surveymsg::detail::RaisingMemoryException([&] {
        std::vector<const CMsg*> open;
        for (const CMsg* owner = this;;) {
            for (int i = 0; i < owner->MsgDependencies.GetCount(); ++i) {
                const CMsg* nested = NestedAt(owner->MsgDependencies, i);
                if (nested == &message) return true;
                if (!nested->MsgDependencies.IsEmpty()) open.push_back(nested);
            }
            if (open.empty()) return false;
            owner = open.back();
            open.pop_back();
        }
    });
}

int CMsg::StoreDependency(CString identifier, CMsg* message) {
    MsgDependencies[std::move(identifier)] = message;
    message->isStored_ = true;
    return 1;
}

int CMsg::AddMsgDependency(CMsg* message) {
    if (!message || message == this || message->isStored_ || message->Owns(*this)) return 0;
    CString identifier = IdentifierOf(*message);
    if (CMsg* stored = Find(MsgDependencies, identifier)) {
        *stored = *message;
        return 1;
    }
    return StoreDependency(std::move(identifier), message);
}

int CMsg::AddMsgDependency(CMsg& message) {
    if (&message == this || message.Owns(*this)) return 0;
    CString identifier = IdentifierOf(message);
    if (CMsg* stored = Find(MsgDependencies, identifier)) {
        if (stored == &message) return 0;
        *stored = message;
        return 1;
    }
    CMsg* made = nullptr;
    if (!AllocMsg(message.MsgKey, nullptr, &made)) return 0;
    surveymsg::detail::OwnedMsg copy(made);
    *copy = message;
    StoreDependency(std::move(identifier), made);
    static_cast<void>(copy.release());
    return 1;
}

// A message that arrives twice replaces the first, at its place in the order, so that neither is lost
// track of and the work stays in proportion to the bytes.
void CMsg::AdoptLoaded(CMsg* message) {
    CObject*& place = MsgDependencies[IdentifierOf(*message)];
    if (place) {
        auto* earlier = static_cast<CMsg*>(place);
        if (typeid(*earlier) != typeid(*message)) surveymsg::detail::RaiseBadSchema("CMsg");
        FreeMsg(earlier);
    }
    place = message;
    message->isStored_ = true;
}

int CMsg::RemoveMsgDependency(CMsg* message) {
    if (!message) return 0;
    const CString identifier = IdentifierOf(*message);
    CMsg* stored = Find(MsgDependencies, identifier);
    if (!stored) return 0;
    MsgDependencies.RemoveKey(identifier);
    FreeMsg(stored);
    return 1;
}

// Takes the whole tree apart level by level, over a list threaded through the messages themselves: it
// needs neither stack in proportion to the depth, which a sender chose, nor memory.
void CMsg::RemoveAllMsgDependencies() {
    if (MsgDependencies.IsEmpty()) return MsgDependencies.RemoveAll();  // what it reserved goes
    CMsg* waiting = nullptr;
    const auto detach = [&waiting](CMsg& owner) {
        for (int i = owner.MsgDependencies.GetCount(); i-- > 0;) {
            CMsg* nested = NestedAt(owner.MsgDependencies, i);
            if (!nested) continue;
            nested->nextReleased_ = std::exchange(waiting, nested);
        }
        owner.MsgDependencies.RemoveAll();
    };
    detach(*this);
    while (CMsg* message = waiting) {
        waiting = message->nextReleased_;
        detach(*message);
        FreeMsg(message);
    }
}
