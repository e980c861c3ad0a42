# candidates.fish SHARE LINE: prints what fish's completion, with SHARE in XDG_DATA_DIRS, offers at
# the end of the line, one candidate a line, as whole values.
complete -C $argv[2] | string replace -r '\t.*' '' | string replace -r '^--?[^=]*=' ''
