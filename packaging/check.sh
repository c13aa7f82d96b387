# shellcheck shell=bash
# What the tests of the packages share: checks that are counted.
passed=0 failed=0

# check WHAT COMMAND...: one test; it passes when the command does. Its output is
# shown when it does not.
check() {
    local what=$1 text
    shift
    if text=$("$@" 2>&1); then
        echo "ok    $what"
        passed=$((passed + 1))
    else
        echo "WRONG $what"
        if [[ -n $text ]]; then echo "      ${text//$'\n'/$'\n'      }"; fi
        failed=$((failed + 1))
    fi
}

# same WANTED GOT: whether the two texts are equal; tells both when not.
same() {
    [[ $1 == "$2" ]] && return
    printf 'wanted: %s\ngot:    %s\n' "$1" "$2"
    return 1
}

# finish: the sums; fails unless all tests passed.
finish() {
    echo "$passed passed, $failed failed"
    ((failed == 0 && passed > 0))
}
