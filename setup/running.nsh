; A program that runs is asked to end, and a run that is on is waited for: nothing here stops a copy. The program
; itself decides (src/app/end_request.h), so that no run can begin between question and answer.
!define MAIN_CLASS "TfmMain"
!define MAIN_CAPTION "Vardeko x64"
!define END_REQUEST "Vardeko.EndRequest"
!define ANSWER_ENDING 1
!define ANSWER_BUSY 2
!define ANSWER_MILLISECONDS 3000
!define POLL_MILLISECONDS 500
!define ERROR_SHARING_VIOLATION 32

; What keeps the program's file from being replaced.
!define STATE_GONE 0
!define STATE_ENDING 1
!define STATE_RUN_IS_ON 2
!define STATE_SILENT 3   ; a version that cannot be asked, or one that does not answer
!define STATE_IN_USE 4   ; no window here: another user's, or one that is still saving

Var RunState
Var RunningLabel

!macro RUNNING UN
; Asks every window of the program to end; $RunState says what came of it.
Function ${UN}AskToEnd
  Push $0
  Push $1
  Push $2
  Push $3
  Push $4
  StrCpy $RunState ${STATE_GONE}
  System::Call 'user32::RegisterWindowMessageW(w "${END_REQUEST}") i .r0'
  StrCpy $1 0
  ${Do}
    FindWindow $1 "${MAIN_CLASS}" "${MAIN_CAPTION}" 0 $1
    ${If} $1 == 0
      ${Break}
    ${EndIf}
    ; SMTO_ABORTIFHUNG
    StrCpy $3 0
    System::Call 'user32::SendMessageTimeoutW(p r1, i r0, p 0, p 0, i 2, i ${ANSWER_MILLISECONDS}, *p 0 r3) p .r2'
    StrCpy $4 ${STATE_SILENT}
    ${If} $2 != 0
      ${If} $3 == ${ANSWER_ENDING}
        StrCpy $4 ${STATE_ENDING}
      ${ElseIf} $3 == ${ANSWER_BUSY}
        StrCpy $4 ${STATE_RUN_IS_ON}
      ${EndIf}
    ${EndIf}
    ; Of several windows, the one that takes most of its user.
    ${If} $4 > $RunState
      StrCpy $RunState $4
    ${EndIf}
    ; A window that is gone is no place to go on from.
    ${If} $4 == ${STATE_ENDING}
      ${Break}
    ${EndIf}
  ${Loop}
  ${If} $RunState == ${STATE_GONE}
  ${AndIf} ${FileExists} "$INSTDIR\${PROGRAM_FILE}"
    ; A program file at work cannot be opened for writing.
    System::Call 'kernel32::CreateFileW(w "$INSTDIR\${PROGRAM_FILE}", i 0x40000000, i 7, p 0, i 3, i 0, p 0) p .r1 ?e'
    Pop $2
    ${If} $1 P<> -1
      System::Call 'kernel32::CloseHandle(p r1)'
    ${ElseIf} $2 == ${ERROR_SHARING_VIOLATION}
      StrCpy $RunState ${STATE_IN_USE}
    ${EndIf}
  ${EndIf}
  Pop $4
  Pop $3
  Pop $2
  Pop $1
  Pop $0
FunctionEnd

Function ${UN}RunningText
  ${Select} $RunState
    ${Case} ${STATE_RUN_IS_ON}
      Push "${TEXT_RUN_IS_ON}"
    ${Case} ${STATE_SILENT}
      Push "${TEXT_DOES_NOT_ANSWER}"
    ${Case} ${STATE_IN_USE}
      Push "${TEXT_IN_USE}"
    ${CaseElse}
      Push "${TEXT_CLOSES}"
  ${EndSelect}
FunctionEnd

; Waits until the program has ended; with a page while there is one, else up to $WaitSeconds.
; $RunState is not STATE_GONE afterwards when that was not enough.
Function ${UN}WaitForEnd
  Push $0
  System::Call 'kernel32::GetTickCount64() l .r0'
  Push $1
  ${Do}
    Call ${UN}AskToEnd
    ${If} $RunState == ${STATE_GONE}
      ${Break}
    ${EndIf}
    System::Call 'kernel32::GetTickCount64() l .r1'
    System::Int64Op $1 - $0
    Pop $1
    System::Int64Op $1 / 1000
    Pop $1
    ${If} $1 >= $WaitSeconds
      ${Break}
    ${EndIf}
    Sleep ${POLL_MILLISECONDS}
  ${Loop}
  Pop $1
  Pop $0
FunctionEnd

; Shown only while the program runs; goes on by itself.
Function ${UN}RunningPage
  Call ${UN}AskToEnd
  ${If} $RunState == ${STATE_GONE}
    Abort
  ${EndIf}
  !insertmacro MUI_HEADER_TEXT "${TEXT_RUNNING_TITLE}" "${TEXT_RUNNING_SUBTITLE}"
  nsDialogs::Create 1018
  Pop $0
  Call ${UN}RunningText
  Pop $1
  ${NSD_CreateLabel} 0 0 100% 60u $1
  Pop $RunningLabel
  GetDlgItem $0 $HWNDPARENT 1
  EnableWindow $0 0
  ${NSD_CreateTimer} ${UN}RunningTick ${POLL_MILLISECONDS}
  nsDialogs::Show
  ${NSD_KillTimer} ${UN}RunningTick
FunctionEnd

Function ${UN}RunningTick
  ; Asking can take seconds, in which the next tick must not ask as well.
  ${NSD_KillTimer} ${UN}RunningTick
  Call ${UN}AskToEnd
  ${If} $RunState == ${STATE_GONE}
    GetDlgItem $0 $HWNDPARENT 1
    EnableWindow $0 1
    SendMessage $HWNDPARENT 0x408 1 0
  ${Else}
    Call ${UN}RunningText
    Pop $0
    ${NSD_SetText} $RunningLabel $0
    ${NSD_CreateTimer} ${UN}RunningTick ${POLL_MILLISECONDS}
  ${EndIf}
FunctionEnd
!macroend
!insertmacro RUNNING ""
!insertmacro RUNNING "un."
