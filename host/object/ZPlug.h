// SPDX-License-Identifier: MIT
// Plugs, and the handles that survive what they point at.
#pragma once

#include <memory>

class ZObject;

/// The end of an object to which handles connect. Every host object is a plug.
class ZPlug
{
public:
    /// The object that this plug belongs to.
    virtual ZObject* GetPlugOwner() = 0;

protected:
    ZPlug();
    virtual ~ZPlug();
    ZPlug(const ZPlug&) = delete;
    ZPlug& operator=(const ZPlug&) = delete;
    /// From here on every handle to this plug answers "not valid". Called by destruction; harmless twice.
    void CutHandles();

private:
    friend class HdlZPlug;
    std::shared_ptr<ZPlug*> m_slot; ///< made when the first handle is set
};

/// A handle to a plug that never owns it: it turns invalid when the plug is destroyed or its object is taken out of
/// use.
class HdlZPlug
{
public:
    void Set(ZPlug* plug);
    bool IsValid() const { return m_slot && *m_slot != nullptr; }
    /// The plug, or null when it is gone.
    ZPlug* Get() const { return m_slot ? *m_slot : nullptr; }

private:
    std::shared_ptr<ZPlug*> m_slot;
};
