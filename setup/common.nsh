; What setup and uninstaller share: rights, failures, the texts of the system.

; Ends before anything was done, with a sentence unless silent.
!macro _Refuse CODE TEXT
  SetErrorLevel ${CODE}
  MessageBox MB_OK|MB_ICONEXCLAMATION "${TEXT}" /SD IDOK
  Quit
!macroend
!define Refuse `!insertmacro _Refuse`

!macro COMMON UN
; $IsAdmin: what this process may, not what its user might.
Function ${UN}ReadRights
  Push $0
  UserInfo::GetAccountType
  Pop $0
  StrCpy $IsAdmin 0
  ${If} $0 == "Admin"
    StrCpy $IsAdmin 1
  ${EndIf}
  Pop $0
FunctionEnd

; The system's text for the error on the stack.
Function ${UN}ErrorText
  Exch $0
  Push $1
  System::Call 'kernel32::FormatMessageW(i 0x12FF, p 0, i r0, i 0, w .r1, i ${NSIS_MAX_STRLEN}, p 0)'
  ${If} $1 == ""
    StrCpy $1 "Fehler $0"
  ${EndIf}
  StrCpy $0 $1
  Pop $1
  Exch $0
FunctionEnd

Function ${UN}Cancelled
  SetErrorLevel ${CODE_CANCELLED}
FunctionEnd
!macroend
!insertmacro COMMON ""
!insertmacro COMMON "un."
