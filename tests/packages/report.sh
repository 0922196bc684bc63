# What the package tests share: one line for each thing that is checked, and a verdict. Sourced, not run.

failures=0

# check WHAT COMMAND...: runs the command; its success is the success of the check.
check()
{
    local what=$1 output
    shift
    if output=$("$@" 2>&1); then
        echo "ok      $what"
    else
        echo "FAILED  $what"
        printf '%s\n' "$output" | sed 's/^/        /' | tail -n 20
        failures=$((failures + 1))
    fi
}

# same EXPECTED FOUND: fails and shows both when they differ.
same()
{
    [ "$1" = "$2" ] && return
    printf 'expected: %s\n   found: %s\n' "$1" "$2"
    return 1
}

# Ends the script: code 1 when any check has failed.
verdict()
{
    if [ "$failures" -ne 0 ]; then
        echo "$1: $failures checks FAILED"
        exit 1
    fi
    echo "$1: passed"
    exit 0
}
