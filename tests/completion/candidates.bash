# candidates.bash SHARE LINE: prints what bash's completion, with SHARE in XDG_DATA_DIRS, offers at
# the end of the line, one candidate a line, as whole values.
source /usr/share/bash-completion/bash_completion
compopt() { :; }  # an option of the line that is being edited: there is none
COMP_LINE=$2 COMP_POINT=${#2} COMP_TYPE=9
# Words as readline makes them: "=" and ":" are words of their own.
read -ra COMP_WORDS <<<"$(sed -E 's/([=:]+)/ \1 /g' <<<"$COMP_LINE")"
[[ $COMP_LINE != *' ' ]] || COMP_WORDS+=('')
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
_completion_loader "${COMP_WORDS[0]}"
function=$(complete -p "${COMP_WORDS[0]}" | sed -E 's/.*-F ([^ ]+).*/\1/')
"$function" "${COMP_WORDS[0]}" "${COMP_WORDS[COMP_CWORD]/#[=:]/}" "${COMP_WORDS[COMP_CWORD - 1]}"

# A candidate replaces what is after the last colon: put the rest of a MAC address before it.
before=$(grep -oP '[^ =]*:(?=[^: =]*$)' <<<"$COMP_LINE")
printf '%s\n' "${COMPREPLY[@]/#/$before}"
