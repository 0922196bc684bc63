; Adds a folder to a machine-wide variable that is a list of folders, and removes it again. The entries of others stay the
; same byte for byte.
;
; NSIS cuts off its own strings at 1024 characters, which would destroy a long PATH. So the text of a variable is only kept
; in system memory and used by its address. A value of an unexpected type or size is left alone.

!include LogicLib.nsh
!include WinMessages.nsh

!define ENVIRONMENT_KEY "SYSTEM\CurrentControlSet\Control\Session Manager\Environment"
!define MACHINE_ROOT -2147483646    ; HKEY_LOCAL_MACHINE, a sign-extended handle
!define READ_AND_WRITE 0x2001F
!define LONGEST_VARIABLE 32766      ; characters, the limit of the system
!define CHARACTER 2                 ; bytes

Var VariableName
Var VariableFolder
Var VariableResult  ; "ok", or why the variable was left alone

Var VariableKey
Var VariableType
Var VariableBytes
Var VariableText    ; address of the text, terminated by a zero
Var VariableFound   ; address of the folder in the text, 0 if it is not there
Var VariableEnd     ; address of what follows the folder

!macro DEFINE_VARIABLE_FUNCTIONS un

; Opens the key and reads the text into memory that has room for the folder. Sets VariableResult.
Function ${un}ReadVariable
    StrCpy $VariableKey 0
    StrCpy $VariableText 0
    StrCpy $VariableType 0
    StrCpy $VariableBytes 0
    System::Call 'advapi32::RegOpenKeyExW(p ${MACHINE_ROOT}, w "${ENVIRONMENT_KEY}", i 0, i ${READ_AND_WRITE}, *p .s) i .s'
    Pop $0
    Pop $VariableKey
    ${If} $0 <> 0
        StrCpy $VariableKey 0
        StrCpy $VariableResult "its registry key cannot be opened (error $0)"
        Return
    ${EndIf}
    System::Call 'advapi32::RegQueryValueExW(p $VariableKey, w "$VariableName", p 0, *i .s, p 0, *i .s) i .s'
    Pop $0
    Pop $1
    Pop $2
    ${If} $0 = 2 ; there is no such value yet
        StrCpy $1 2 ; REG_EXPAND_SZ, the type that the system uses
        StrCpy $2 0
    ${ElseIf} $0 <> 0
        StrCpy $VariableResult "it cannot be read (error $0)"
        Return
    ${EndIf}
    ${If} $1 <> 1
    ${AndIf} $1 <> 2
        StrCpy $VariableResult "it is not text"
        Return
    ${EndIf}
    StrCpy $VariableType $1
    StrCpy $VariableBytes $2

    StrLen $0 $VariableFolder
    IntOp $0 $0 + 4 ; two separators, and a terminator, which text in the registry may lack
    IntOp $0 $0 * ${CHARACTER}
    IntOp $0 $0 + $VariableBytes
    System::Alloc $0
    Pop $VariableText
    ${If} $VariableText P= 0
        StrCpy $VariableResult "there is no memory for it"
        Return
    ${EndIf}
    ${If} $VariableBytes > 0
        System::Call 'advapi32::RegQueryValueExW(p $VariableKey, w "$VariableName", p 0, p 0, p $VariableText, *i $VariableBytes) i .s'
        Pop $0
        ${If} $0 <> 0
            StrCpy $VariableResult "it cannot be read (error $0)"
            Return
        ${EndIf}
    ${EndIf}
    StrCpy $VariableResult "ok"
FunctionEnd

Function ${un}WriteVariable
    System::Call 'kernel32::lstrlenW(p $VariableText) i .s'
    Pop $0
    ${If} $0 > ${LONGEST_VARIABLE}
        StrCpy $VariableResult "it would become longer than the system allows"
        Return
    ${EndIf}
    ${If} $0 = 0
        System::Call 'advapi32::RegDeleteValueW(p $VariableKey, w "$VariableName") i .s'
    ${Else}
        IntOp $0 $0 + 1
        IntOp $0 $0 * ${CHARACTER}
        System::Call 'advapi32::RegSetValueExW(p $VariableKey, w "$VariableName", i 0, i $VariableType, p $VariableText, i $0) i .s'
    ${EndIf}
    Pop $0
    ${If} $0 <> 0
        StrCpy $VariableResult "it cannot be written (error $0)"
    ${EndIf}
FunctionEnd

Function ${un}CloseVariable
    ${If} $VariableText P<> 0
        System::Free $VariableText
    ${EndIf}
    ${If} $VariableKey P<> 0
        System::Call 'advapi32::RegCloseKey(p $VariableKey)'
    ${EndIf}
FunctionEnd

; Finds the folder as a whole entry of the list, in upper or lower case, with or without a backslash at the end.
Function ${un}FindFolder
    StrCpy $VariableFound $VariableText
    ${Do}
        System::Call 'shlwapi::StrStrIW(p $VariableFound, w "$VariableFolder") p .s'
        Pop $VariableFound
        ${If} $VariableFound P= 0
            Return
        ${EndIf}
        StrLen $0 $VariableFolder
        IntOp $0 $0 * ${CHARACTER}
        IntPtrOp $VariableEnd $VariableFound + $0
        System::Call '*$VariableEnd(&i2 .s)'
        Pop $0
        ${If} $0 = 92 ; a backslash
            IntPtrOp $VariableEnd $VariableEnd + ${CHARACTER}
            System::Call '*$VariableEnd(&i2 .s)'
            Pop $0
        ${EndIf}
        StrCpy $1 59 ; a semicolon; the start of the text counts as one
        ${If} $VariableFound P<> $VariableText
            IntPtrOp $2 $VariableFound - ${CHARACTER}
            System::Call '*$2(&i2 .s)'
            Pop $1
        ${EndIf}
        ${If} $1 = 59
            ${If} $0 = 59
            ${OrIf} $0 = 0
                Return
            ${EndIf}
        ${EndIf}
        IntPtrOp $VariableFound $VariableFound + ${CHARACTER}
    ${Loop}
FunctionEnd

; Removes the entry that FindFolder found from the text, with one of the separators around it.
Function ${un}CutFolder
    System::Call '*$VariableEnd(&i2 .s)'
    Pop $0
    ${If} $0 = 59
        IntPtrOp $VariableEnd $VariableEnd + ${CHARACTER}
    ${ElseIf} $VariableFound P<> $VariableText
        IntPtrOp $VariableFound $VariableFound - ${CHARACTER}
    ${EndIf}
    System::Call 'kernel32::lstrlenW(p $VariableEnd) i .s'
    Pop $0
    IntOp $0 $0 + 1
    IntOp $0 $0 * ${CHARACTER}
    System::Call 'ntdll::RtlMoveMemory(p $VariableFound, p $VariableEnd, p $0)'
FunctionEnd

Function ${un}AppendToVariable
    Call ${un}ReadVariable
    ${If} $VariableResult == "ok"
        Call ${un}FindFolder
        ${If} $VariableFound P= 0
            System::Call 'kernel32::lstrlenW(p $VariableText) i .s'
            Pop $0
            ${If} $0 > 0
                IntOp $0 $0 - 1
                IntOp $0 $0 * ${CHARACTER}
                IntPtrOp $0 $VariableText + $0
                System::Call '*$0(&i2 .s)'
                Pop $0
                ${If} $0 <> 59
                    System::Call 'kernel32::lstrcatW(p $VariableText, w ";")'
                ${EndIf}
            ${EndIf}
            System::Call 'kernel32::lstrcatW(p $VariableText, w "$VariableFolder")'
            Call ${un}WriteVariable
        ${EndIf}
    ${EndIf}
    Call ${un}CloseVariable
FunctionEnd

Function ${un}RemoveFromVariable
    Call ${un}ReadVariable
    ${If} $VariableResult == "ok"
        StrCpy $3 0
        ${Do}
            Call ${un}FindFolder
            ${If} $VariableFound P= 0
                ${Break}
            ${EndIf}
            Call ${un}CutFolder
            StrCpy $3 1
        ${Loop}
        ${If} $3 = 1
            Call ${un}WriteVariable
        ${EndIf}
    ${EndIf}
    Call ${un}CloseVariable
FunctionEnd

!macroend

; Programs that are started from now on see the change; running programs keep their environment.
!macro ANNOUNCE_VARIABLES
    SendMessage ${HWND_BROADCAST} ${WM_SETTINGCHANGE} 0 "STR:Environment" /TIMEOUT=5000
!macroend
