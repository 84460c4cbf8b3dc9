# Completion of vek-shell's options and files.
complete -o default -W '-e -j --trace --record --replay --dump --help --version' vek-shell
