#!/bin/sh
# A plan exported by one user and applied by another, in a second Wine prefix whose profile has
# another name, with the same programs installed in each profile: afterwards tolvanec lists the
# same items in the same states with the same delays in both, their paths apart only by the
# profile's folder.
#   roaming_test.sh SOURCE_DIR BIN_DIR HELPER_PROGRAM WORK_DIR
# The prefixes stay in WORK_DIR, so that a second run does not make them again.
set -eu
src=$1 bin=$2 helper=$3 work=$4
. "$src/scripts/wine-env.sh"
mkdir -p "$work"
work=$(cd "$work" && pwd)
trap 'wine_env_stop "$work/ann"; wine_env_stop "$work/bohdan"' EXIT

# Wine takes the user's name from $USER at every start: each prefix is always run as its user.
on() { # USER PROGRAM [ARGS...]
    user=$1
    shift
    USER=$user "$src/scripts/wine-run" "$work/$user" "$@"
}
winpath() { printf 'Z:%s' "$1" | tr / '\\'; }

cat >"$work/shortcut.js" <<'EOF'
var link = WScript.CreateObject("WScript.Shell").CreateShortcut(WScript.Arguments(0));
link.TargetPath = WScript.Arguments(1);
link.Arguments = WScript.Arguments(2);
link.Save();
EOF

# The user's prefix with Tolvane and one program in the profile, started at log-on by three Run
# values and a shortcut, all active; whatever an earlier run left is gone.
install() { # USER
    on "$1" cmd /c exit # makes the prefix on the first run
    profile="$work/$1/prefix/drive_c/users/$1"
    programs="C:\\users\\$1\\AppData\\Local\\Programs"
    rm -rf "$profile/AppData/Local/Programs" "$profile/AppData/Roaming/Microsoft/Windows/Start Menu/Programs/StartUp"
    mkdir -p "$profile/AppData/Local/Programs/Roam" "$profile/AppData/Roaming/Microsoft/Windows/Start Menu/Programs/StartUp"
    cp -r "$bin" "$profile/AppData/Local/Programs/Tolvane"
    cp "$helper" "$profile/AppData/Local/Programs/Roam/roam.exe"
    roam=$(printf '%s' "$programs\\Roam\\roam.exe" | sed 's/\\/\\\\/g')
    {
        printf 'REGEDIT4\n\n[-HKEY_CURRENT_USER\\Software\\Hexmoor]\n'
        printf '[-HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Run]\n'
        printf '[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Run]\n'
        for name in Sync Agent Tray; do
            printf '"Roam %s"="\\"%s\\" --%s"\n' "$name" "$roam" "$name"
        done
    } >"$work/$1.reg"
    on "$1" regedit /s "$(winpath "$work/$1.reg")"
    on "$1" cscript //nologo "$(winpath "$work/shortcut.js")" \
        "C:\\users\\$1\\AppData\\Roaming\\Microsoft\\Windows\\Start Menu\\Programs\\StartUp\\Roam Notes.lnk" \
        "$programs\\Roam\\roam.exe" --notes >/dev/null
}
tolvanec() { # USER ARGS...
    user=$1
    shift
    on "$user" "C:\\users\\$user\\AppData\\Local\\Programs\\Tolvane\\tolvanec.exe" "$@"
}
# The list, each path's profile folder named alike.
listed() { # USER
    tolvanec "$1" list --json | tr -s '\\' / | sed "s#/users/$1/#/users/USER/#g" >"$work/$1.json"
}
fail() {
    echo "roaming_test: $*" >&2
    exit 1
}

install ann
tolvanec ann delay "Roam Sync" --delay 7
tolvanec ann stop "Roam Notes.lnk"
tolvanec ann export "$(winpath "$work/plan.json")"
listed ann
grep -q '"state": "delayed", "location": "user-run", "name": "Roam Sync=.*"delay": 7,' "$work/ann.json" &&
    grep -q '"state": "stopped", "location": "user-folder", "name": "Roam Notes.lnk"' "$work/ann.json" ||
    fail "the items did not move in the first prefix: $(cat "$work/ann.json")"

install bohdan
tolvanec bohdan apply "$(winpath "$work/plan.json")"
listed bohdan
diff "$work/ann.json" "$work/bohdan.json" >&2 || fail "the second prefix differs after apply"
again=$(tolvanec bohdan apply "$(winpath "$work/plan.json")" --check) ||
    fail "apply --check after apply: $again"
echo "$again" | grep -q "^Nothing to change" || fail "apply --check after apply: $again"
echo "roaming_test: the plan of ann applied for bohdan gives the same log-on"
