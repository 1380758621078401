; The installer for Windows. build.sh calls it with Version, Content (the folder to install), Icon and Result.
; Without a word it installs for one person and needs no administrator; for everybody it is started as one. /S asks
; nothing, /CurrentUser and /AllUsers answer for whom, /D=FOLDER (the last word) where.
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma

!define Name "Quillon"
!define ProgId "Quillon.Database"
!define Settings "Software\${Name}"
!define EventSource "SYSTEM\CurrentControlSet\Services\EventLog\Application\${Name}"
!define Uninstall "Software\Microsoft\Windows\CurrentVersion\Uninstall\${Name}"

!define MULTIUSER_EXECUTIONLEVEL Highest
!define MULTIUSER_MUI
!define MULTIUSER_INSTALLMODE_COMMANDLINE
!define MULTIUSER_INSTALLMODE_DEFAULT_CURRENTUSER
!define MULTIUSER_INSTALLMODE_INSTDIR "${Name}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_KEY "${Settings}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_VALUENAME "Folder"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_KEY "${Settings}"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_VALUENAME "Folder"
!define MULTIUSER_USE_PROGRAMFILES64
!include MultiUser.nsh
!include MUI2.nsh
!include FileFunc.nsh

Name "${Name}"
OutFile "${Result}"
BrandingText "${Name} ${Version}"
VIProductVersion "${Version}.0.0"
VIAddVersionKey /LANG=1041 "ProductName" "${Name}"
VIAddVersionKey /LANG=1041 "ProductVersion" "${Version}"
VIAddVersionKey /LANG=1041 "FileVersion" "${Version}"
VIAddVersionKey /LANG=1041 "FileDescription" "${Name} のインストーラ"
VIAddVersionKey /LANG=1041 "LegalCopyright" "The Quillon authors"

!define MUI_ICON "${Icon}"
!define MUI_UNICON "${Icon}"
!define MUI_ABORTWARNING
!define MUI_LANGDLL_REGISTRY_ROOT SHCTX
!define MUI_LANGDLL_REGISTRY_KEY "${Settings}"
!define MUI_LANGDLL_REGISTRY_VALUENAME "Language"
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_FUNCTION StartByDesktop

!insertmacro MULTIUSER_PAGE_INSTALLMODE
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
; The first one is for whoever has neither.
!insertmacro MUI_LANGUAGE "Japanese"
!insertmacro MUI_LANGUAGE "English"
!insertmacro MUI_RESERVEFILE_LANGDLL

LangString Restore ${LANG_JAPANESE} "失われたデータを戻す"
LangString Restore ${LANG_ENGLISH} "Take Back Lost Data"
LangString Type ${LANG_JAPANESE} "Quillon データベース"
LangString Type ${LANG_ENGLISH} "Quillon database"
LangString Running ${LANG_JAPANESE} "Quillon が動いています。終了してからやり直してください。"
LangString Running ${LANG_ENGLISH} "Quillon is running. Close it and try again."

Var Asked

; A program that runs cannot be written to.
!macro StopWhereItRuns
  IfFileExists "$INSTDIR\quillon.exe" 0 +7
  ClearErrors
  FileOpen $0 "$INSTDIR\quillon.exe" a
  IfErrors 0 +3
  MessageBox MB_OK|MB_ICONEXCLAMATION "$(Running)" /SD IDOK
  Abort
  FileClose $0
!macroend

Function StartByDesktop
  ; The installer may be the administrator's; the desktop is the person's.
  Exec '"$WINDIR\explorer.exe" "$SMPROGRAMS\${Name}\${Name}.lnk"'
FunctionEnd

Function .onInit
  ; What /D has named, before the answer for whom gives it its usual name.
  StrCpy $Asked $INSTDIR
  !insertmacro MULTIUSER_INIT
  StrCmp $Asked "" +2
  StrCpy $INSTDIR $Asked
  !insertmacro MUI_LANGDLL_DISPLAY
FunctionEnd

Function un.onInit
  !insertmacro MULTIUSER_UNINIT
  !insertmacro MUI_UNGETLANGUAGE
FunctionEnd

Section
  !insertmacro StopWhereItRuns
  SetOutPath "$INSTDIR"
  File /r "${Content}/*"
  WriteUninstaller "$INSTDIR\uninstall.exe"

  ; The folder "work in" of an entry is where it would look for its files; it goes home by itself.
  CreateDirectory "$SMPROGRAMS\${Name}"
  CreateShortCut "$SMPROGRAMS\${Name}\${Name}.lnk" "$INSTDIR\quillon.exe" "--home"
  CreateShortCut "$SMPROGRAMS\${Name}\$(Restore).lnk" "$INSTDIR\quillon.exe" "--home --restore"

  ; The ending of our files is that of another program's as well: ours is offered and takes nothing away.
  WriteRegStr SHCTX "Software\Classes\${ProgId}" "" "$(Type)"
  WriteRegStr SHCTX "Software\Classes\${ProgId}\DefaultIcon" "" "$INSTDIR\quillon.exe,0"
  WriteRegStr SHCTX "Software\Classes\${ProgId}\shell\open\command" "" '"$INSTDIR\quillon.exe" --home -- "%1"'
  WriteRegStr SHCTX "Software\Classes\.mdb\OpenWithProgids" "${ProgId}" ""
  WriteRegStr SHCTX "Software\Classes\Applications\quillon.exe" "FriendlyAppName" "${Name}"
  WriteRegStr SHCTX "Software\Classes\Applications\quillon.exe\shell\open\command" "" '"$INSTDIR\quillon.exe" --home -- "%1"'

  ; How the system shows our lines in its event log is for an administrator to say.
  StrCmp $MultiUser.InstallMode "AllUsers" 0 +3
  WriteRegExpandStr HKLM "${EventSource}" "EventMessageFile" "$INSTDIR\quillon.exe"
  WriteRegDWORD HKLM "${EventSource}" "TypesSupported" 7

  WriteRegStr SHCTX "${Settings}" "Folder" "$INSTDIR"
  WriteRegStr SHCTX "${Settings}" "Language" "$LANGUAGE"
  WriteRegStr SHCTX "${Uninstall}" "DisplayName" "${Name}"
  WriteRegStr SHCTX "${Uninstall}" "DisplayVersion" "${Version}"
  WriteRegStr SHCTX "${Uninstall}" "Publisher" "The Quillon authors"
  WriteRegStr SHCTX "${Uninstall}" "DisplayIcon" "$INSTDIR\quillon.exe,0"
  WriteRegStr SHCTX "${Uninstall}" "InstallLocation" "$INSTDIR"
  WriteRegStr SHCTX "${Uninstall}" "UninstallString" '"$INSTDIR\uninstall.exe" /$MultiUser.InstallMode'
  WriteRegStr SHCTX "${Uninstall}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /$MultiUser.InstallMode /S'
  WriteRegDWORD SHCTX "${Uninstall}" "NoModify" 1
  WriteRegDWORD SHCTX "${Uninstall}" "NoRepair" 1
  ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
  IntFmt $0 "0x%08X" $0
  WriteRegDWORD SHCTX "${Uninstall}" "EstimatedSize" "$0"
SectionEnd

; What we have brought goes, by its names. The databases, the folder of the person's files and the kept copies stay, also
; where somebody has put them beside the program.
Section "Uninstall"
  !insertmacro StopWhereItRuns
  Delete "$INSTDIR\quillon.exe"
  Delete "$INSTDIR\quillon-cli.exe"
  Delete "$INSTDIR\Readme.txt"
  Delete "$INSTDIR\Quillon 機能仕様.txt"
  Delete "$INSTDIR\manual\images\*.png"
  RMDir "$INSTDIR\manual\images"
  Delete "$INSTDIR\manual\manual.*"
  RMDir "$INSTDIR\manual"
  Delete "$INSTDIR\licences\*.txt"
  RMDir "$INSTDIR\licences"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"

  ; In whatever language they were made.
  Delete "$SMPROGRAMS\${Name}\*.lnk"
  RMDir "$SMPROGRAMS\${Name}"
  StrCmp $MultiUser.InstallMode "AllUsers" 0 +2
  DeleteRegKey HKLM "${EventSource}"
  DeleteRegKey SHCTX "Software\Classes\${ProgId}"
  DeleteRegKey SHCTX "Software\Classes\Applications\quillon.exe"
  DeleteRegValue SHCTX "Software\Classes\.mdb\OpenWithProgids" "${ProgId}"
  DeleteRegKey /ifempty SHCTX "Software\Classes\.mdb\OpenWithProgids"
  DeleteRegKey /ifempty SHCTX "Software\Classes\.mdb"
  DeleteRegKey SHCTX "${Uninstall}"
  DeleteRegKey SHCTX "${Settings}"
SectionEnd
