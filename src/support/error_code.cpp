#include "support/error_code.h"

#include <windows.h>

#include <algorithm>
#include <iterator>

bool IsMissing(TErrorCode error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

bool IsOutOfReach(TErrorCode error) {
    constexpr TErrorCode kCodes[] = {
        ERROR_NOT_READY,         ERROR_REM_NOT_LIST,         ERROR_BAD_NETPATH,
        ERROR_NETWORK_BUSY,      ERROR_DEV_NOT_EXIST,        ERROR_ADAP_HDW_ERR,
        ERROR_UNEXP_NET_ERR,     ERROR_NETNAME_DELETED,      ERROR_BAD_NET_NAME,
        ERROR_SEM_TIMEOUT,       ERROR_VC_DISCONNECTED,      ERROR_NO_NET_OR_BAD_PATH,
        ERROR_NO_NETWORK,        ERROR_GRACEFUL_DISCONNECT,  ERROR_NETWORK_UNREACHABLE,
        ERROR_HOST_UNREACHABLE,  ERROR_PORT_UNREACHABLE,     ERROR_CONNECTION_ABORTED,
        ERROR_NOT_CONNECTED,     ERROR_DEVICE_NOT_CONNECTED, ERROR_CONNECTION_REFUSED,
        ERROR_CONNECTION_INVALID};
    return std::ranges::find(kCodes, error) != std::end(kCodes);
}
