# candidates.bash SCRIPT LINE: prints what bash's completion offers at the end of the line, one
# candidate a line, as whole values.
source /usr/share/bash-completion/bash_completion
source "$1"
COMP_LINE=$2
COMP_POINT=${#COMP_LINE}
COMP_TYPE=9

# Words as readline makes them: "=" and ":" are words of their own.
read -ra parts <<<"$(sed -E 's/([=:]+)/ \1 /g' <<<"$COMP_LINE")"
COMP_WORDS=("${parts[@]}")
[[ $COMP_LINE != *' ' ]] || COMP_WORDS+=('')
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
if [[ ${COMP_WORDS[COMP_CWORD]} == [=:] ]]; then current=''; else current=${COMP_WORDS[COMP_CWORD]}; fi

_corvane corvane "$current" "${COMP_WORDS[COMP_CWORD - 1]}"

# A candidate replaces what is after the last colon: put the rest of a MAC address before it.
word=${COMP_LINE##*[ =]}
before=''
[[ $word != *:* ]] || before=${word%"${word##*:}"}
for candidate in "${COMPREPLY[@]}"; do printf '%s\n' "$before$candidate"; done
