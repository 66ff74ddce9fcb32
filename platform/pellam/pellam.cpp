#include "interfaces/pellam.h"

#include <cstring>
#include <utility>

PellamServiceParam::PellamServiceParam(std::uint32_t requestedService,
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
                                       bool write)
    : service(requestedService),
      variable(requestedVariable),
      buffer(answerBuffer),
      context(requestContext),
      size(bytes),
      index(firstIndex),
      text(std::move(requestText)),
      owner(requestOwner),
      indices(indexQuantity),
      values(valueQuantity),
      flags(requestFlags),
      isWrite(write) {}

bool PellamServiceParam::Answer(const void* value, std::uint32_t bytes) {
  if (isWrite || !buffer || !value || bytes != size) return false;
  std::memcpy(buffer, value, bytes);
  return true;
}

void PellamScandoraService::PellamReadVariable(PellamServiceParam& request,
                                               enumPellamVariable variable,
                                               void* buffer,
                                               std::uint32_t size,
                                               std::uint32_t index) {
  request.service = service_Read;
  request.variable = variable;
  request.buffer = buffer;
  request.size = size;
  request.index = index;
  request.isWrite = false;
}
