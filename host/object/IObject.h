// SPDX-License-Identifier: MIT
// The root interface of everything that the host and its guests hand to each other.
#pragma once

/// Interfaces are reached by a query with a numeric id and 0, anew at every use: what an object answers may change, and
/// nobody keeps the answer across events. Id 0 is IObject itself. The answer points into the object, which keeps
/// owning it; null means that the object has no such interface.
class IObject
{
public:
    virtual void* IQuery(int interfaceId, int flags) = 0;

protected:
    virtual ~IObject() = default;
};

inline constexpr int kInterfaceObject = 0;

/// Marks an object that may be the receiver of host events.
class ICallback
{
protected:
    virtual ~ICallback() = default;
};

/// Marks an object that may hold other objects through plugs.
class IVxObjectHolder
{
protected:
    virtual ~IVxObjectHolder() = default;
};

/// Marks an object that the host may write to and read from a stream.
class IXtrStorable
{
protected:
    virtual ~IXtrStorable() = default;
};

/// Marks an object that the host keeps in one of its registries.
class IRegister
{
protected:
    virtual ~IRegister() = default;
};

class ZObject;

/// `object` as a host object, or null.
ZObject* Object_FromInterface(IObject* object);
