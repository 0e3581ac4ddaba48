; The installer: for one user, without an administrator, into a folder that this user can write (the program writes
; beside itself). The uninstaller takes what was installed and leaves what the user made.
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
!include MUI2.nsh
!include FileFunc.nsh

!define KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\VKTCfgTools"

Name "VKTCfgTools ${VERSION}"
OutFile "${OUTPUT}"
RequestExecutionLevel user
InstallDir "$LOCALAPPDATA\Programs\VKTCfgTools"
InstallDirRegKey HKCU "${KEY}" "InstallLocation"
ManifestDPIAware true

VIProductVersion "${VERSION}.0"
VIFileVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "VKTCfgTools"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "VKTCfgTools 安装程序"
VIAddVersionKey "LegalCopyright" "MIT"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_FINISHPAGE_RUN "$INSTDIR\bin\VKTCfgTools.exe"
!define MUI_FINISHPAGE_RUN_FUNCTION start_program
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "SimpChinese"
!insertmacro MUI_LANGUAGE "English"

; The program's working directory is the folder it lies in.
Function start_program
    SetOutPath "$INSTDIR\bin"
    Exec '"$INSTDIR\bin\VKTCfgTools.exe"'
FunctionEnd

; What an older version brought and this one does not must not stay; what the user made lies in bin\ and log\.
!macro remove_installed
    Delete "$INSTDIR\bin\VKTCfgTools.exe"
    Delete "$INSTDIR\bin\vkt.exe"
    RMDir /r "$INSTDIR\res"
    RMDir /r "$INSTDIR\tools\bps_data_list"
    RMDir "$INSTDIR\tools"
    RMDir /r "$INSTDIR\docs"
    RMDir /r "$INSTDIR\licences"
    Delete "$INSTDIR\README.zh-CN.md"
!macroend

Section
    !insertmacro remove_installed
    SetOutPath "$INSTDIR"
    File /r "${TREE}\*"
    CreateDirectory "$INSTDIR\log"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    SetOutPath "$INSTDIR\bin"
    CreateShortcut "$SMPROGRAMS\VKTCfgTools.lnk" "$INSTDIR\bin\VKTCfgTools.exe"
    WriteRegStr HKCU "${KEY}" "DisplayName" "VKTCfgTools"
    WriteRegStr HKCU "${KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${KEY}" "DisplayIcon" "$INSTDIR\bin\VKTCfgTools.exe"
    WriteRegStr HKCU "${KEY}" "Publisher" "The VKTCfgTools authors"
    WriteRegStr HKCU "${KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKCU "${KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKCU "${KEY}" "NoModify" 1
    WriteRegDWORD HKCU "${KEY}" "NoRepair" 1
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD HKCU "${KEY}" "EstimatedSize" $0
SectionEnd

Section "Uninstall"
    SetOutPath "$TEMP"
    !insertmacro remove_installed
    Delete "$INSTDIR\uninstall.exe"
    Delete "$SMPROGRAMS\VKTCfgTools.lnk"
    ; Found again at every start; nothing that a user would miss.
    Delete "$INSTDIR\bin\com_list.txt"
    Delete "$INSTDIR\log\p_v_info.txt"
    RMDir "$INSTDIR\bin"
    RMDir "$INSTDIR\log"
    RMDir "$INSTDIR"
    DeleteRegKey HKCU "${KEY}"
SectionEnd
