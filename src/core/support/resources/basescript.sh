# Tarn runs this script with /bin/sh when you run the script command on a
# selection. The selected media files that exist are its arguments ("$@");
# the same paths are on the clipboard, separated by carriage returns
# (read them with: xclip -o -selection clipboard | tr '\r' '\n').
# TARN_EXTERNAL_APP holds the preference "ExternalAppBundleID".
#
# This default opens the files in the external application when that is a
# command (MediaInfo's "mediainfo-gui" by default), and otherwise shows every
# folder that holds a selected file in the file manager, each folder once.
# Edit it in the preferences; "Reset" brings this text back.
app=${TARN_EXTERNAL_APP:-mediainfo-gui}
if [ "$#" -gt 0 ] && command -v "$app" >/dev/null 2>&1; then
    "$app" "$@" >/dev/null 2>&1 &
    exit 0
fi
seen=""
for file in "$@"; do
    folder=$(dirname -- "$file")
    case "
$seen
" in
        *"
$folder
"*) continue ;;
    esac
    seen="$seen
$folder"
    xdg-open "$folder" >/dev/null 2>&1 &
done
