# candidates.fish SCRIPT LINE: prints what fish's completion offers at the end of the line, one
# candidate a line, as whole values.
source $argv[1]
complete -C $argv[2] | string replace -r '\t.*' '' | string replace -r '^--?[^=]*=' ''
