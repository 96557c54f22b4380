#include "support/error_code.h"

#include <windows.h>

#include <algorithm>
#include <iterator>

namespace {

constexpr TErrorCode kNoSuchDevice = 433;  // unknown to some headers

}  // namespace

TErrorCode LastFailure() {
    const TErrorCode error = GetLastError();
    return error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE;
}

bool IsMissing(TErrorCode error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

bool IsOutOfReach(TErrorCode error) {
    constexpr TErrorCode kCodes[] = {ERROR_NOT_READY,
                                     ERROR_GEN_FAILURE,
                                     ERROR_REM_NOT_LIST,
                                     ERROR_BAD_NETPATH,
                                     ERROR_NETWORK_BUSY,
                                     ERROR_DEV_NOT_EXIST,
                                     ERROR_ADAP_HDW_ERR,
                                     ERROR_UNEXP_NET_ERR,
                                     ERROR_NETNAME_DELETED,
                                     ERROR_BAD_NET_NAME,
                                     ERROR_SEM_TIMEOUT,
                                     ERROR_VC_DISCONNECTED,
                                     ERROR_NO_NET_OR_BAD_PATH,
                                     ERROR_NO_NETWORK,
                                     ERROR_GRACEFUL_DISCONNECT,
                                     ERROR_NETWORK_UNREACHABLE,
                                     ERROR_HOST_UNREACHABLE,
                                     ERROR_PORT_UNREACHABLE,
                                     ERROR_CONNECTION_ABORTED,
                                     ERROR_NOT_CONNECTED,
                                     ERROR_DEVICE_NOT_CONNECTED,
                                     ERROR_CONNECTION_REFUSED,
                                     ERROR_CONNECTION_INVALID,
                                     ERROR_INVALID_DRIVE,
                                     ERROR_BAD_NET_RESP,
                                     kNoSuchDevice,
                                     ERROR_IO_DEVICE,
                                     ERROR_HOST_DOWN,
                                     ERROR_DEVICE_REMOVED};
    return std::ranges::find(kCodes, error) != std::end(kCodes);
}

bool IsTransientRefusal(TErrorCode error) {
    return error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION;
}
