// The parameter database: acquisition parameters of an inspection, asked for by variable and index.
//
// A request is a plain record; whoever supplies parameters answers it by writing into the caller's
// buffer.
#pragma once

#include <cstdint>
#include <string>

#include "export.h"

/// Variables of the database that the library reads.
enum enumPellamVariable : std::uint32_t {
  PRM_ID_None = 0,
  PRM_ID_ElectronicScanning = 1,  ///< electronic-scanning mode of a channel, 4 bytes
  PRM_ID_bLinearMerged = 2        ///< whether a channel's linear scans are merged, 1 byte
};

/// Electronic scanning of a channel. A database may answer with values that are not named here.
enum enumElectronicScanning : std::uint32_t {
  escan_Mode2 = 2,    ///< with linear merging the channel's sub-channels make one data group
  escan_Mode4 = 4,    ///< as mode 2
  escan_Unknown = 11  ///< nobody answered
};

/// One request. It owns nothing: the buffer stays the asker's and must live until the request has
/// been handled.
class UTDATA_API PellamServiceParam {
 public:
  PellamServiceParam(std::uint32_t requestedService,
                     std::uint32_t requestedVariable,
                     void* answerBuffer,
                     void* requestContext,
                     std::uint32_t bytes,
                     std::uint32_t firstIndex,
                     std::wstring requestText,
                     void* requestOwner,
                     std::int32_t indexQuantity,
                     std::int32_t valueQuantity,
                     std::int32_t requestFlags,
                     bool write);

  /// Answers a read: copies `bytes` bytes into the buffer when that is the size asked for. False,
  /// and nothing is copied, otherwise.
  bool Answer(const void* value, std::uint32_t bytes);

  std::uint32_t service;   ///< PellamScandoraService::service_Read once prepared
  std::uint32_t variable;  ///< enumPellamVariable
  void* buffer;            ///< receives the value; keeps its preset when nobody answers
  void* context;
  std::uint32_t size;   ///< bytes of the buffer
  std::uint32_t index;  ///< of the variable; channels count from 1
  std::wstring text;
  void* owner;
  std::int32_t indices;
  std::int32_t values;
  std::int32_t flags;
  bool isWrite;
};

namespace PellamScandoraService {

inline constexpr std::uint32_t service_Read = 1;

/// Prepares a request to read one variable. Nothing is read until the request is handled.
/// @param buffer receives `size` bytes; keeps its content when nobody answers
/// @param index  of the variable, from 1
UTDATA_API void PellamReadVariable(PellamServiceParam& request,
                                   enumPellamVariable variable,
                                   void* buffer,
                                   std::uint32_t size,
                                   std::uint32_t index);

}  // namespace PellamScandoraService

/// What the library asks for parameters; implemented by the host.
class UTDATA_API IPellamSupplier {
 public:
  /// Answers a request, or leaves its buffer alone. @param flag 0
  virtual void HandleParameterRequest(PellamServiceParam& request, std::int32_t flag) = 0;
  /// Parameters have changed. The library never calls it.
  virtual void OnParametersChanged() = 0;
  virtual ~IPellamSupplier() = default;
};
