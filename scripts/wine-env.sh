# Shell functions shared by wine-run and the tolvane script (sourced, not run).
# A build folder owns one Wine world under WINE_DIR: the prefix, a private X server and a
# lingering wineserver. Nothing here touches the user's ~/.wine or their display.

wine_env_setup() { # WINE_DIR
    TOLVANE_WINE_DIR=$1
    mkdir -p "$TOLVANE_WINE_DIR"
    TOLVANE_WINE_DIR=$(cd "$TOLVANE_WINE_DIR" && pwd)
    export WINEPREFIX="$TOLVANE_WINE_DIR/prefix"
    export WINEARCH=win64
    export WINEDEBUG=-all
    # Wine turns Unix file names and command lines into Unicode through the Unix locale: a UTF-8
    # one, or a name such as "微信" arrives as question marks.
    export LANG=C.UTF-8 LC_ALL=C.UTF-8
    # No Mono or Gecko prompts, no desktop files written into $HOME.
    export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
}

# Starts the private X server unless it still runs; sets DISPLAY.
wine_env_display() {
    pidfile="$TOLVANE_WINE_DIR/xvfb.pid"
    numfile="$TOLVANE_WINE_DIR/xvfb.display"
    if [ -s "$pidfile" ] && [ -s "$numfile" ] && kill -0 "$(cat "$pidfile")" 2>/dev/null; then
        export DISPLAY=":$(cat "$numfile")"
        return 0
    fi
    rm -f "$numfile"
    # -displayfd picks a free display number and writes it once the server accepts clients.
    setsid Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -noreset \
        3>"$numfile" </dev/null >/dev/null 2>&1 &
    echo $! >"$pidfile"
    i=0
    while [ ! -s "$numfile" ]; do
        i=$((i + 1))
        if [ $i -gt 200 ]; then
            echo "wine-run: the private X server did not start" >&2
            return 1
        fi
        sleep 0.05
    done
    export DISPLAY=":$(tr -d '\n' <"$numfile")"
}

# Makes the prefix once: boot it, keep windows unmanaged (a managed window's close waits 2 s
# under X) and cut the links that a fresh prefix makes into the real home folder.
wine_env_prefix() {
    [ -f "$WINEPREFIX/.tolvane-ready" ] && return 0
    rm -rf "$WINEPREFIX"
    wineboot -i </dev/null >/dev/null 2>&1
    wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f </dev/null >/dev/null 2>&1
    for link in "$WINEPREFIX"/drive_c/users/*/*; do
        if [ -L "$link" ]; then
            rm -f "$link"
            mkdir -p "$link"
        fi
    done
    wineserver -w
    touch "$WINEPREFIX/.tolvane-ready"
}

# One server for the whole run: each Wine process then starts in a few hundredths of a second.
wine_env_server() {
    wineserver -p300 </dev/null >/dev/null 2>&1 || true
}

wine_env_ready() { # WINE_DIR
    wine_env_setup "$1"
    exec 9>"$TOLVANE_WINE_DIR/lock"
    flock 9
    wine_env_display && wine_env_prefix && wine_env_server
    rc=$?
    flock -u 9
    exec 9>&-
    return $rc
}

wine_env_stop() { # WINE_DIR
    wine_env_setup "$1"
    wineserver -k 2>/dev/null || true
    if [ -s "$TOLVANE_WINE_DIR/xvfb.pid" ]; then
        kill "$(cat "$TOLVANE_WINE_DIR/xvfb.pid")" 2>/dev/null || true
        rm -f "$TOLVANE_WINE_DIR/xvfb.pid" "$TOLVANE_WINE_DIR/xvfb.display"
    fi
}
