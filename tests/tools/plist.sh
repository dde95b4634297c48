#!/bin/sh
# The plist tool from outside: results, complaints, exit statuses. usage: plist.sh PLIST WORK_FOLDER
plist=$1; work=$2; failures=0
rm -rf "$work"; mkdir -p "$work"; cd "$work" || exit 1
expect() { # expect NAME STATUS OUTPUT COMMAND...
    name=$1 status=$2 output=$3; shift 3
    got=$("$@" 2>&1); was=$?
    [ "$was" = "$status" ] || { echo "$name: status $was, not $status: $got" | head -5; failures=1; }
    case $got in *"$output"*) ;; *) echo "$name: no '$output' in: $got" | head -5; failures=1 ;; esac
}
printf '{ a = (1, "two words", <0a0b>); "k\303\251" = {deep = end;}; }' >good
printf '{\n a = 1;\n b = (2\n}' >bad
printf '\377\376(\0"\0\001\004"\0)\0' >wide
printf '\376\377\0(\0"\004\001\0"\0)' >big
printf '\357\273\277(a)' >marked
printf '\377\376(\0x' >odd
printf '"no newline" = "at the end"' >table.strings
: >empty
mkdir folder; printf 'x' >closed; chmod 000 closed
expect print 0 '"two words"' "$plist" print good
expect get 0 'end' "$plist" get good "ké.deep"
expect index 0 'two words' "$plist" get good a.1
expect missing 1 'no value at a.7 (7)' "$plist" get good a.7
expect lint 0 '' "$plist" lint good wide big marked
expect "which file" 3 'bad: ' "$plist" lint good wide bad empty
expect "which line" 1 'Parse error line 4 (position' "$plist" lint bad
expect "little end" 0 '\U0401' "$plist" print wide
expect "big end" 0 '\U0401' "$plist" print big
expect odd 1 'odd number of bytes' "$plist" lint odd
expect empty 1 'expected' "$plist" lint empty
expect folder 1 'not a readable regular file' "$plist" lint folder
expect nowhere 1 'No such file or directory' "$plist" lint nowhere
[ "$(id -u)" = 0 ] || expect closed 1 'not a readable regular file' "$plist" lint closed
expect strings 0 '"no newline" = "at the end";' "$plist" strings table.strings
expect usage 120 'usage: plist print FILE' "$plist" print
expect input 0 'x' sh -c "printf '(x)' | '$plist' print -"
expect nesting 1 'Nesting too deep' sh -c "head -c 100000 /dev/zero | tr '\\0' '(' | '$plist' lint -"
exit $failures
