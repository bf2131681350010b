// SPDX-License-Identifier: MIT
// Connectors: typed doors through which a constraint reads and writes the transforms of objects.
#pragma once

class ZModel;
struct ZEvaluateInfo;

enum ZDataType
{
    ZDataTypeTranslation,
    ZDataTypeRotation,
    ZDataTypeScaling
};

/// Which transform a connector carries. The host's connectors carry global transforms.
enum kBufferTypeLocalGlobal
{
    kBufferTypeLocal = 0,
    kBufferTypeGlobal = 1
};

inline constexpr int kConnectorWriteDirect = 2; ///< write mode: the value holds for this pass

/// Data are doubles: translation four (x, y, z, 1), rotation three (degrees about X, then Y, then Z), scaling three.
/// Read and written by the evaluation only.
class IConnector
{
public:
    /// Reads the object's unconstrained value and says which buffer it is of.
    virtual bool ReadDataEx(double* data, kBufferTypeLocalGlobal& buffer, const ZEvaluateInfo& info) = 0;
    virtual bool WriteDataEx(const double* data, kBufferTypeLocalGlobal buffer, const ZEvaluateInfo& info,
                             int writeMode) = 0;
    /// The connector's own buffer kind.
    virtual kBufferTypeLocalGlobal GetBufferType() const = 0;
    virtual ZDataType GetDataType() const = 0;
    virtual ZModel* GetObject() const = 0;

protected:
    virtual ~IConnector() = default;
};
