; The task of every evening, in the system's scheduler: it runs as this user, while he is logged on, as the program
; needs his rights and his network drives.

!define TASK_NAME_START "Vardeko Sicherung ("
!define TASKS_FOLDER "$SYSDIR\Tasks"

!macro TASK_NAMES UN
; The name of this user's task.
Function ${UN}TaskName
  Push $0
  UserInfo::GetName
  Pop $0
  StrCpy $0 "${TASK_NAME_START}$0)"
  Exch $0
FunctionEnd

; The text on the stack as XML holds it.
Function ${UN}XmlText
  Exch $0
  ${WordReplace} $0 "&" "&amp;" "+" $0
  ${WordReplace} $0 "<" "&lt;" "+" $0
  ${WordReplace} $0 ">" "&gt;" "+" $0
  Exch $0
FunctionEnd

; The program that a task starts, as the task's file names it.
Function ${UN}TaskCommand
  Push "$INSTDIR\${PROGRAM_FILE}"
  Call ${UN}XmlText
  Exch $0
  StrCpy $0 '<Command>"$0"</Command>'
  Exch $0
FunctionEnd
!macroend
!insertmacro TASK_NAMES ""
!insertmacro TASK_NAMES "un."

; The time on the stack as hh:mm; empty when it is none.
Function CheckTime
  Exch $0
  Push $1
  Push $2
  Push $3
  StrLen $1 $0
  ${If} $1 == 4
    StrCpy $0 "0$0"
  ${ElseIf} $1 != 5
    StrCpy $0 ""
  ${EndIf}
  StrCpy $1 $0 2
  StrCpy $2 $0 2 3
  StrCpy $3 $0 1 2
  ; What is no number is 0 for IntOp, and so differs from itself.
  IntOp $R8 $1 + 100
  IntOp $R9 $2 + 100
  ${If} $R8 != "1$1"
  ${OrIf} $R9 != "1$2"
  ${OrIf} $3 != ":"
  ${OrIf} $1 > 23
  ${OrIf} $2 > 59
    StrCpy $0 ""
  ${EndIf}
  Pop $3
  Pop $2
  Pop $1
  Exch $0
FunctionEnd

; Makes the task, in the place of one that is there. It ends by force after 23 hours at the latest: a run that could
; not begin waits for its user, and would hold up the next evening's.
Function MakeTask
  ${GetTime} "" "L" $0 $1 $2 $3 $4 $5 $6
  StrCpy $3 "$2-$1-$0T$TaskTime:00"
  ; NameSamCompatible: computer or domain, and the user.
  System::Call 'secur32::GetUserNameExW(i 2, w .r4, *i ${NSIS_MAX_STRLEN})'
  ${If} $4 == ""
    UserInfo::GetName
    Pop $4
  ${EndIf}
  Push $4
  Call XmlText
  Pop $4
  Call TaskCommand
  Pop $5
  StrCpy $6 "false"
  ${If} $TaskWakes == 1
    StrCpy $6 "true"
  ${EndIf}
  InitPluginsDir
  FileOpen $0 "$PLUGINSDIR\task.xml" w
  FileWriteUTF16LE /BOM $0 '<?xml version="1.0" encoding="UTF-16"?>$\r$\n'
  FileWriteUTF16LE $0 '<Task version="1.2" xmlns="http://schemas.microsoft.com/windows/2004/02/mit/task">$\r$\n'
  FileWriteUTF16LE $0 '<RegistrationInfo><Description>${TEXT_TASK_DESCRIPTION}</Description></RegistrationInfo>$\r$\n'
  FileWriteUTF16LE $0 '<Triggers><CalendarTrigger><StartBoundary>$3</StartBoundary><Enabled>true</Enabled>'
  FileWriteUTF16LE $0 '<ScheduleByDay><DaysInterval>1</DaysInterval></ScheduleByDay></CalendarTrigger></Triggers>$\r$\n'
  FileWriteUTF16LE $0 '<Principals><Principal id="Author"><UserId>$4</UserId>'
  FileWriteUTF16LE $0 '<LogonType>InteractiveToken</LogonType><RunLevel>LeastPrivilege</RunLevel></Principal></Principals>$\r$\n'
  FileWriteUTF16LE $0 '<Settings><MultipleInstancesPolicy>IgnoreNew</MultipleInstancesPolicy>'
  FileWriteUTF16LE $0 '<DisallowStartIfOnBatteries>false</DisallowStartIfOnBatteries>'
  FileWriteUTF16LE $0 '<StopIfGoingOnBatteries>false</StopIfGoingOnBatteries>'
  FileWriteUTF16LE $0 '<AllowHardTerminate>true</AllowHardTerminate>'
  FileWriteUTF16LE $0 '<StartWhenAvailable>true</StartWhenAvailable>'
  FileWriteUTF16LE $0 '<IdleSettings><StopOnIdleEnd>false</StopOnIdleEnd><RestartOnIdle>false</RestartOnIdle></IdleSettings>'
  FileWriteUTF16LE $0 '<Enabled>true</Enabled><WakeToRun>$6</WakeToRun>'
  FileWriteUTF16LE $0 '<ExecutionTimeLimit>PT23H</ExecutionTimeLimit></Settings>$\r$\n'
  FileWriteUTF16LE $0 '<Actions Context="Author"><Exec>$5<Arguments>/COPY</Arguments></Exec></Actions>$\r$\n'
  FileWriteUTF16LE $0 '</Task>$\r$\n'
  FileClose $0
  Call TaskName
  Pop $1
  nsExec::ExecToStack '"$SYSDIR\schtasks.exe" /Create /TN "$1" /XML "$PLUGINSDIR\task.xml" /F'
  Pop $0
  Pop $1
  ${If} $0 != 0
    SetErrorLevel ${CODE_NO_TASK}
    MessageBox MB_OK|MB_ICONEXCLAMATION "${TEXT_TASK_FAILED}$\r$\n$1" /SD IDOK
  ${EndIf}
FunctionEnd

; Removes this user's task, and with an administrator's rights everybody's; only those that start this program.
Function un.RemoveTasks
  Call un.TaskName
  Pop $1
  ${If} $IsAdmin == 0
    Call un.RemoveTask
    Return
  ${EndIf}
  FindFirst $0 $1 "${TASKS_FOLDER}\${TASK_NAME_START}*"
  ${DoWhile} $1 != ""
    Call un.RemoveTask
    FindNext $0 $1
  ${Loop}
  FindClose $0
FunctionEnd

; $1: the task's name. One that starts another program was changed by its user, or belongs to another copy; where
; the task's file cannot be read, the name decides.
Function un.RemoveTask
  Push $0
  Push $2
  Push $3
  Call un.TaskCommand
  Pop $2
  ClearErrors
  FileOpen $0 "${TASKS_FOLDER}\$1" r
  ${IfNot} ${Errors}
    ${Do}
      ClearErrors
      FileReadUTF16LE $0 $3
      ${If} ${Errors}
        ${Break}
      ${EndIf}
      ${WordFind} "$3" "<Command>" "E+1{" $R9
      ${IfNot} ${Errors}
        ${WordFind} "$3" "$2" "E+1{" $R9
        ${If} ${Errors}
          StrCpy $2 ""
        ${EndIf}
      ${EndIf}
    ${Loop}
    FileClose $0
  ${EndIf}
  ${If} $2 != ""
    nsExec::Exec '"$SYSDIR\schtasks.exe" /Delete /TN "$1" /F'
    Pop $0
  ${EndIf}
  Pop $3
  Pop $2
  Pop $0
FunctionEnd
