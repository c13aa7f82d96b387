; The installer for Windows, for the user who starts it. scripts/package defines
; VERSION, FILES (the folder to install from), ICON and OUTPUT, and puts the lines
; that remove the samples into samples.nsh beside FILES.
Unicode true
SetCompressor /SOLID lzma
RequestExecutionLevel user
ManifestDPIAware true
ManifestSupportedOS all
Name "Kestrel"
OutFile "${OUTPUT}"
BrandingText "Kestrel ${VERSION}"

!define ENTRY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Kestrel"
!define CLASSES "Software\Classes"
!define PROGID "Kestrel.gas"
; The exit code when the program runs.
!define EXIT_IN_USE 3

InstallDir "$LOCALAPPDATA\Programs\Kestrel"
InstallDirRegKey HKCU "${ENTRY}" "InstallLocation"

VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "Kestrel"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "Kestrel Setup"
VIAddVersionKey "CompanyName" "The Kestrel developers"
VIAddVersionKey "LegalCopyright" "MIT licence"

!include FileFunc.nsh
!include LogicLib.nsh
!include MUI2.nsh
!include WinVer.nsh
!include x64.nsh

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_COMPONENTSPAGE_SMALLDESC
!define MUI_FINISHPAGE_RUN "$INSTDIR\kestrel.exe"
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_COMPONENTS
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

; Sets the error flag when the file is there but cannot be written.
!macro TryToWrite FILE
  ${If} ${FileExists} "${FILE}"
    FileOpen $0 "${FILE}" a
    FileClose $0
  ${EndIf}
!macroend

; Goes on once no program in FOLDER runs: files of a running one cannot be
; replaced, and half an installation is worse than none. Silent, it ends instead.
!macro WaitUntilUnused FOLDER
  ${Do}
    ClearErrors
    !insertmacro TryToWrite "${FOLDER}\kestrel.exe"
    !insertmacro TryToWrite "${FOLDER}\kestrel-cli.exe"
    !insertmacro TryToWrite "${FOLDER}\kestrel-tank.exe"
    ; The question takes the flag down.
    ${IfNot} ${Errors}
      ${Break}
    ${EndIf}
    ${If} ${Cmd} `MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION \
        "Kestrel is running. Close it, then try again." /SD IDCANCEL IDCANCEL`
      SetErrorLevel ${EXIT_IN_USE}
      Quit
    ${EndIf}
  ${Loop}
!macroend

; Tells the desktop that the programs for files have changed.
!macro TellDesktop
  System::Call 'shell32::SHChangeNotify(i 0x08000000, i 0, p 0, p 0)'
!macroend

Section "Kestrel" SecProgram
  SectionIn RO
  ; An older version takes away its own files first, wherever it is; the settings
  ; stay. What it may have left is overwritten.
  ReadRegStr $1 HKCU "${ENTRY}" "InstallLocation"
  ${If} $1 != ""
  ${AndIf} ${FileExists} "$1\uninstall.exe"
    !insertmacro WaitUntilUnused $1
    ExecWait '"$1\uninstall.exe" /S _?=$1' $0
    ${If} $0 <> 0
      Abort "The version in $1 cannot be removed."
    ${EndIf}
    Delete "$1\uninstall.exe"
    RMDir "$1"
  ${EndIf}
  !insertmacro WaitUntilUnused $INSTDIR

  ClearErrors
  SetOutPath "$INSTDIR"
  File /r "${FILES}\*"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  ${If} ${Errors}
    Abort "The files cannot be written into $INSTDIR."
  ${EndIf}
  CreateShortcut "$SMPROGRAMS\Kestrel.lnk" "$INSTDIR\kestrel.exe"

  WriteRegStr HKCU "${ENTRY}" "DisplayName" "Kestrel"
  WriteRegStr HKCU "${ENTRY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${ENTRY}" "DisplayIcon" "$INSTDIR\kestrel.exe"
  WriteRegStr HKCU "${ENTRY}" "Publisher" "The Kestrel developers"
  WriteRegStr HKCU "${ENTRY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${ENTRY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${ENTRY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${ENTRY}" "NoModify" 1
  WriteRegDWORD HKCU "${ENTRY}" "NoRepair" 1
  SectionGetSize ${SecProgram} $0
  WriteRegDWORD HKCU "${ENTRY}" "EstimatedSize" $0
SectionEnd

Section "Open .gas files with Kestrel" SecAssociation
  ; What opened them before comes back when Kestrel goes.
  ReadRegStr $0 HKCU "${CLASSES}\.gas" ""
  ${If} $0 != "${PROGID}"
    WriteRegStr HKCU "${ENTRY}" "GasBefore" "$0"
  ${EndIf}
  WriteRegStr HKCU "${CLASSES}\${PROGID}" "" "Game definitions"
  WriteRegStr HKCU "${CLASSES}\${PROGID}\DefaultIcon" "" "$INSTDIR\kestrel.exe,0"
  WriteRegStr HKCU "${CLASSES}\${PROGID}\shell\open\command" "" '"$INSTDIR\kestrel.exe" "%1"'
  WriteRegStr HKCU "${CLASSES}\.gas" "" "${PROGID}"
  WriteRegStr HKCU "${CLASSES}\.gas\OpenWithProgids" "${PROGID}" ""
  !insertmacro TellDesktop
SectionEnd

LangString DescProgram ${LANG_ENGLISH} "The program, kestrel-cli and samples."
LangString DescAssociation ${LANG_ENGLISH} "A double click on a .gas file opens it in Kestrel."
!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
  !insertmacro MUI_DESCRIPTION_TEXT ${SecProgram} $(DescProgram)
  !insertmacro MUI_DESCRIPTION_TEXT ${SecAssociation} $(DescAssociation)
!insertmacro MUI_FUNCTION_DESCRIPTION_END

Function .onInit
  ${IfNot} ${RunningX64}
  ${OrIfNot} ${AtLeastWin10}
    MessageBox MB_OK|MB_ICONSTOP "Kestrel needs Windows 10 or later, of 64 bits." /SD IDOK
    SetErrorLevel 2
    Quit
  ${EndIf}
  ; Nothing is taken from another program, nor from a user who said no before,
  ; unless asked for.
  ReadRegStr $0 HKCU "${CLASSES}\.gas" ""
  ${If} $0 == ""
    ReadRegStr $0 HKCR ".gas" ""
  ${EndIf}
  ReadRegStr $1 HKCU "${ENTRY}" "InstallLocation"
  ${GetParameters} $2
  ClearErrors
  ${GetOptions} $2 "/ASSOC=" $3
  ${If} ${Errors}
    StrCpy $3 0
    ${If} $0 == "${PROGID}"
      StrCpy $3 1
    ${ElseIf} $0 == ""
    ${AndIf} $1 == ""
      StrCpy $3 1
    ${EndIf}
  ${EndIf}
  ${If} $3 == 0
    !insertmacro UnselectSection ${SecAssociation}
  ${EndIf}
FunctionEnd

!macro RemoveSettings FOLDER
  Delete "${FOLDER}\settings.set"
  Delete "${FOLDER}\settings.set.bak"
  Delete "${FOLDER}\layout.set"
  Delete "${FOLDER}\layout.set.bak"
  Delete "${FOLDER}\*.his"
  Delete "${FOLDER}\*.his.bak"
!macroend

; First, so that the program's section finds an empty folder.
Section /o "un.Remove the settings too" UnSettings
  !insertmacro WaitUntilUnused $INSTDIR
  !insertmacro RemoveSettings $INSTDIR
  !insertmacro RemoveSettings "$APPDATA\Kestrel"
  RMDir "$APPDATA\Kestrel"
SectionEnd

Section "un.Kestrel" UnProgram
  SectionIn RO
  !insertmacro WaitUntilUnused $INSTDIR
  ; By name: the folder may hold files of the user, and the archive library.
  Delete "$INSTDIR\kestrel.exe"
  Delete "$INSTDIR\kestrel-cli.exe"
  Delete "$INSTDIR\kestrel-tank.exe"
  Delete "$INSTDIR\README.txt"
  Delete "$INSTDIR\LICENSE.txt"
  Delete "$INSTDIR\manual.html"
  !include "${FILES}\..\samples.nsh"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\Kestrel.lnk"

  ReadRegStr $0 HKCU "${CLASSES}\.gas" ""
  ${If} $0 == "${PROGID}"
    ReadRegStr $0 HKCU "${ENTRY}" "GasBefore"
    ${If} $0 == ""
      DeleteRegValue HKCU "${CLASSES}\.gas" ""
    ${Else}
      WriteRegStr HKCU "${CLASSES}\.gas" "" "$0"
    ${EndIf}
  ${EndIf}
  DeleteRegValue HKCU "${CLASSES}\.gas\OpenWithProgids" "${PROGID}"
  DeleteRegKey /ifnosubkeys /ifnovalues HKCU "${CLASSES}\.gas\OpenWithProgids"
  DeleteRegKey /ifnosubkeys /ifnovalues HKCU "${CLASSES}\.gas"
  DeleteRegKey HKCU "${CLASSES}\${PROGID}"
  DeleteRegKey HKCU "${ENTRY}"
  !insertmacro TellDesktop
SectionEnd

LangString DescUnProgram ${LANG_ENGLISH} "The program, kestrel-cli and samples."
LangString DescUnSettings ${LANG_ENGLISH} "Settings, layout, and what the boxes remember."
!insertmacro MUI_UNFUNCTION_DESCRIPTION_BEGIN
  !insertmacro MUI_DESCRIPTION_TEXT ${UnProgram} $(DescUnProgram)
  !insertmacro MUI_DESCRIPTION_TEXT ${UnSettings} $(DescUnSettings)
!insertmacro MUI_UNFUNCTION_DESCRIPTION_END

Function un.onInit
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/CLEAN" $1
  ${IfNot} ${Errors}
    !insertmacro SelectSection ${UnSettings}
  ${EndIf}
FunctionEnd
