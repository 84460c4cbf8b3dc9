complete -c vek-lab -f -n __fish_use_subcommand -a "(vek-lab 2>&1 | awk '{ print \$2 }')"
complete -c vek-lab -F -n '__fish_seen_subcommand_from load members'
complete -c vek-lab -n '__fish_seen_subcommand_from enter' -l routing
