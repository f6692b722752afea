-- Tarn runs this script when you run the script command on a selection. The
-- selected media files that exist are on the clipboard, one path per line,
-- separated by carriage returns. TARN_EXTERNAL_APP holds the preference
-- "ExternalAppBundleID".
--
-- This default opens the files in that application (MediaInfo by default).
-- Edit it in the preferences; "Reset" brings this text back.
set appID to system attribute "TARN_EXTERNAL_APP"
if appID is "" then set appID to "net.mediaarea.mediainfo.mac"
set thePaths to the clipboard as text
set AppleScript's text item delimiters to return
set theItems to text items of thePaths
set AppleScript's text item delimiters to ""
set theFiles to {}
repeat with p in theItems
	if (length of p) > 0 then set end of theFiles to (POSIX file (p as text)) as alias
end repeat
if (count of theFiles) > 0 then
	tell application id appID to open theFiles
end if
