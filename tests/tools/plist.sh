#!/bin/sh
# SPDX-License-Identifier: MIT
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
expect "which line" 1 "bad: line 4, column 1: expected ',' or ')', found '}'" "$plist" lint bad
expect "little end" 0 '("Ё")' "$plist" print wide
expect "big end" 0 '\U0401' "$plist" --ascii print big
printf '{ k = "\\Ud83d\\Ude00 \\351\\001 \\\\U0041 \\U2028 \\Ud83d"; }' >shown
expect shown 0 '{k = "😀 é\001 \\U0041 \U2028 \Ud83d"; }' "$plist" print shown
expect "shown in Latin-1" 0 '{k = "\Ud83d\Ude00 \351' "$plist" --output-encoding 5 print shown
[ -e /dev/full ] && expect full 1 'cannot write: ' sh -c "'$plist' print good >/dev/full"
expect odd 1 'odd number of bytes' "$plist" lint odd
expect empty 1 'expected' "$plist" lint empty
expect folder 1 'not a readable regular file' "$plist" lint folder
expect nowhere 1 'No such file or directory' "$plist" lint nowhere
[ "$(id -u)" = 0 ] || expect closed 1 'not a readable regular file' "$plist" lint closed
expect strings 0 '"no newline" = "at the end";' "$plist" strings table.strings
expect usage 120 'plist print FILE' "$plist" print
expect list 0 'Japanese EUC' "$plist" --list-encodings
for e in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 21; do
    # Symbol has digits, but neither letters nor a line feed.
    printf '( 31 )' >number
    expect "in $e" 0 '' sh -c "'$plist' --output-encoding $e get number 0 >wide.$e"
    expect "through $e" 0 '31' "$plist" --encoding $e print wide.$e
done
printf '{ k = "\306\374\313\334"; }' >euc
printf '{ k = "\223\372\226{"; }' >sjis
expect "japanese" 0 '日本' "$plist" --encoding 'japanese euc' get euc k
expect "shift jis" 0 '日本' "$plist" --encoding shift-jis get sjis k
expect "to euc" 0 '日本' sh -c "'$plist' --encoding 8 --output-encoding 3 get sjis k | iconv -f EUC-JP -t UTF-8"
expect "not in it" 1 'ISO Latin-1 does not have' "$plist" --encoding 3 --output-encoding 5 get euc k
printf '(\200)' >euc2
expect "not text" 1 'not text in Shift JIS' "$plist" --encoding 8 lint euc2
expect "no encoding" 120 'no encoding klingon' "$plist" --encoding klingon print good
expect "no value" 120 'usage' "$plist" --encoding
expect input 0 'x' sh -c "printf '(x)' | '$plist' print -"
expect nesting 1 'nested too deep' sh -c "head -c 100000 /dev/zero | tr '\\0' '(' | '$plist' lint -"
exit $failures
