// The OCI entry points of the double that read LOBs through their locators.

#include "OciDoubleHandles.h"

#include <algorithm>
#include <cstring>

using namespace ocidouble;

namespace {

// Bytes taken by the first `characters` characters of UTF-8 text.
std::size_t prefixBytes(const std::string& text, ub8 characters) {
  std::size_t at = 0;
  for (ub8 n = 0; n < characters && at < text.size(); ++n) {
    ++at;
    while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80)
      ++at;
  }
  return at;
}

// Characters in the first `bytes` bytes of UTF-8 text (continuation bytes do not start one).
ub8 charactersIn(const std::string& text, std::size_t bytes) {
  return ub8(std::count_if(text.begin(), text.begin() + std::ptrdiff_t(bytes),
                           [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

ub8 lengthOf(const LobHandle& lob) {
  return lob.characters ? charactersIn(lob.data, lob.data.size()) : lob.data.size();
}

// Data within the prefetch size came with the row; anything else is one more round trip.
void roundTripUnlessPrefetched(const LobHandle& lob) {
  if (lob.data.size() > state().lobPrefetch)
    log("lob round trip");
}

} // namespace

OCI_DOUBLE_EXPORT sword OCILobGetLength2(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub8* lenp) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  const auto* service = find<ServiceHandle>(svchp);
  const auto* lob = find<LobHandle>(locp);
  if (!error || !service || !lob || !lenp)
    return INVALID_HANDLE;
  if (!connected(*service))
    return notConnected(error);
  roundTripUnlessPrefetched(*lob);
  *lenp = lengthOf(*lob);
  return SUCCESS;
}

OCI_DOUBLE_EXPORT sword OCILobRead2(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub8* byteAmtp,
                                    ub8* charAmtp, ub8 offset, void* bufp, ub8 bufl, ub1 piece, void*, void*, ub2,
                                    ub1) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  const auto* service = find<ServiceHandle>(svchp);
  const auto* lob = find<LobHandle>(locp);
  if (!error || !service || !lob || !byteAmtp || !charAmtp || !bufp)
    return INVALID_HANDLE;
  if (!connected(*service))
    return notConnected(error);
  // Only the whole value in one piece, from the start, as the backend reads it.
  if (offset != 1 || piece != ONE_PIECE)
    return fail(error, 24801, "illegal parameter value in OCI lob function");
  const std::size_t wanted = lob->characters && *byteAmtp == 0 ? prefixBytes(lob->data, *charAmtp)
                                                               : std::min<std::size_t>(*byteAmtp, lob->data.size());
  if (wanted > bufl)
    return fail(error, 24801, "illegal parameter value in OCI lob function");
  roundTripUnlessPrefetched(*lob);
  std::memcpy(bufp, lob->data.data(), wanted);
  *byteAmtp = wanted;
  if (lob->characters)
    *charAmtp = charactersIn(lob->data, wanted);
  return SUCCESS;
}
