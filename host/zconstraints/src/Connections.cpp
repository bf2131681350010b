// SPDX-License-Identifier: MIT
// Connectors on the objects of the scene: global transforms, split into translation, rotation and scaling.
#include "Connections.h"

#include "zmodel/ZModel.h"

#include <algorithm>
#include <utility>

namespace {
class HostConnector : public IConnector
{
public:
    HostConnector(ConnectedObject& object, ZDataType type) : m_object(object), m_type(type) {}
    ~HostConnector() override = default;

    kBufferTypeLocalGlobal GetBufferType() const override { return kBufferTypeGlobal; }
    ZDataType GetDataType() const override { return m_type; }
    ZModel* GetObject() const override { return m_object.model; }

protected:
    ConnectedObject& m_object;
    const ZDataType m_type;
};

class SourceConnector final : public HostConnector
{
public:
    using HostConnector::HostConnector;

    bool ReadDataEx(double* data, kBufferTypeLocalGlobal& buffer, const ZEvaluateInfo&) override
    {
        if (data == nullptr || !m_object.known)
            return false;
        buffer = kBufferTypeGlobal;
        const ZgeTRS& trs = m_object.unconstrained;
        if (m_type == ZDataTypeTranslation) {
            const double values[] = {trs.translation.x, trs.translation.y, trs.translation.z, trs.translation.w};
            std::copy(std::begin(values), std::end(values), data);
        } else {
            const ZgeVector3& v = m_type == ZDataTypeRotation ? trs.rotation : trs.scaling;
            const double values[] = {v.x, v.y, v.z};
            std::copy(std::begin(values), std::end(values), data);
        }
        return true;
    }
    bool WriteDataEx(const double*, kBufferTypeLocalGlobal, const ZEvaluateInfo&, int) override { return false; }
};

class DestinationConnector final : public HostConnector
{
public:
    using HostConnector::HostConnector;

    bool ReadDataEx(double*, kBufferTypeLocalGlobal&, const ZEvaluateInfo&) override { return false; }
    bool WriteDataEx(const double* data, kBufferTypeLocalGlobal buffer, const ZEvaluateInfo&, int writeMode) override
    {
        if (data == nullptr || buffer != kBufferTypeGlobal || writeMode != kConnectorWriteDirect)
            return false;
        ZgeTRS& trs = m_object.written;
        if (m_type == ZDataTypeTranslation)
            trs.translation = {data[0], data[1], data[2], 1};
        else
            (m_type == ZDataTypeRotation ? trs.rotation : trs.scaling) = {data[0], data[1], data[2]};
        m_object.wrote[m_type] = true;
        return true;
    }
};

void FreeConnector(IConnector* connector) { delete static_cast<HostConnector*>(connector); }

template <class Kind, size_t N>
void MakeAll(ConnectedObject& object, std::unique_ptr<IConnector, void (*)(IConnector*)> (&connectors)[N])
{
    for (size_t type = 0; type < N; ++type)
        connectors[type] = {new Kind(object, static_cast<ZDataType>(type)), FreeConnector};
}

bool IsDataType(ZDataType type) { return type >= ZDataTypeTranslation && type <= ZDataTypeScaling; }
} // namespace

ConnectedObject::ConnectedObject(ZModel* object)
    : model(object), sources{{nullptr, FreeConnector}, {nullptr, FreeConnector}, {nullptr, FreeConnector}},
      destinations{{nullptr, FreeConnector}, {nullptr, FreeConnector}, {nullptr, FreeConnector}}
{
    handle.Set(object);
}

ConnectedObject::~ConnectedObject() = default;

ZModel* ConnectedObject::GetModel() const { return handle.IsValid() ? model : nullptr; }

void ConnectedObject::Prepare()
{
    std::fill(std::begin(wrote), std::end(wrote), false);
    const ZModel* const object = GetModel();
    known = object != nullptr && sources[0] != nullptr;
    if (known)
        unconstrained = ZgeDecompose(object->GetUnconstrainedGlobal());
}

bool ConnectedObject::Apply()
{
    if (!wrote[ZDataTypeTranslation] && !wrote[ZDataTypeRotation] && !wrote[ZDataTypeScaling])
        return GiveBack(); // a written value holds for its pass only
    ZModel* const object = GetModel();
    if (object == nullptr)
        return false;
    ZgeTRS result = written;
    if (!wrote[ZDataTypeTranslation] || !wrote[ZDataTypeRotation] || !wrote[ZDataTypeScaling]) {
        const ZgeTRS own = ZgeDecompose(object->GetUnconstrainedGlobal());
        if (!wrote[ZDataTypeTranslation])
            result.translation = own.translation;
        if (!wrote[ZDataTypeRotation])
            result.rotation = own.rotation;
        if (!wrote[ZDataTypeScaling])
            result.scaling = own.scaling;
    }
    applied = true;
    const ZgeMatrix global = ZgeCompose(result);
    if (object->GetConstrainedGlobal() == global)
        return false;
    object->SetConstrainedGlobal(global);
    return true;
}

bool ConnectedObject::GiveBack()
{
    ZModel* const object = GetModel();
    if (!std::exchange(applied, false) || object == nullptr || !object->GetConstrainedGlobal().has_value())
        return false;
    object->SetConstrainedGlobal(std::nullopt);
    return true;
}

ConnectedObject& ZConstraint::Connections::Connect(ZModel* object)
{
    std::unique_ptr<ConnectedObject>& connected = objects[object];
    if (connected && connected->GetModel() == nullptr)
        gone.push_back(std::exchange(connected, nullptr));
    if (!connected)
        connected = std::make_unique<ConnectedObject>(object);
    return *connected;
}

IConnector* ZConstraint::Connections::GetSource(ZModel* object, ZDataType type)
{
    if (object == nullptr || !IsDataType(type))
        return nullptr;
    ConnectedObject& connected = Connect(object);
    if (!connected.sources[type])
        MakeAll<SourceConnector>(connected, connected.sources);
    return connected.sources[type].get();
}

IConnector* ZConstraint::Connections::GetDestination(ZModel* object, ZDataType type)
{
    if (object == nullptr || !IsDataType(type))
        return nullptr;
    ConnectedObject& connected = Connect(object);
    if (!connected.destinations[type])
        MakeAll<DestinationConnector>(connected, connected.destinations);
    return connected.destinations[type].get();
}

void ZConstraint::Connections::Prepare()
{
    for (const auto& [model, object] : objects)
        object->Prepare();
    for (const auto& object : gone)
        object->Prepare();
}

bool ZConstraint::Connections::Apply()
{
    bool changed = false;
    for (const auto& [model, object] : objects)
        changed = object->Apply() || changed;
    return changed;
}

void ZConstraint::Connections::Release()
{
    for (auto& [model, object] : objects)
        if (object->applied)
            toGiveBack.push_back(std::move(object));
    objects.clear();
    gone.clear();
}

bool ZConstraint::Connections::GiveBack()
{
    bool changed = false;
    for (const auto& object : toGiveBack)
        changed = object->GiveBack() || changed;
    toGiveBack.clear();
    return changed;
}
