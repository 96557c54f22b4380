#include "app/end_request.h"

UINT EndRequestMessage() {
    static const UINT message = RegisterWindowMessageW(L"Vardeko.EndRequest");
    return message;
}
