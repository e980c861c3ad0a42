# candidates.fish FOLDER LINE: prints what fish's completion, with the script in FOLDER, offers at
# the end of the line, one candidate a line, as whole values.
source $argv[1]/corvane.fish
complete -C $argv[2] | string replace -r '\t.*' '' | string replace -r '^--?[^=]*=' ''
