// SPDX-License-Identifier: MIT
// Host events and the handlers that receive them.
#pragma once

class ZObject;

/// The base of every host event; what else it carries depends on where the handler was registered.
struct ZEvent
{
    int kind = 0;

    explicit ZEvent(int eventKind = 0) : kind(eventKind) {}
    virtual ~ZEvent() = default;
};

/// A member operation of one object that receives (sender, event). Two handlers are equal when object and operation
/// are.
struct ZHandler
{
    using Call = void (*)(void* object, ZObject* sender, ZEvent& event);

    void* object = nullptr;
    Call call = nullptr;

    void operator()(ZObject* sender, ZEvent& event) const
    {
        if (call != nullptr)
            call(object, sender, event);
    }
    explicit operator bool() const { return call != nullptr; }
    friend bool operator==(const ZHandler&, const ZHandler&) = default;
};

/// ZMakeHandler<&Tool::OnModelGone>(this)
template <auto Operation, class T> ZHandler ZMakeHandler(T* object)
{
    return {object, [](void* receiver, ZObject* sender, ZEvent& event) {
                (static_cast<T*>(receiver)->*Operation)(sender, event);
            }};
}
