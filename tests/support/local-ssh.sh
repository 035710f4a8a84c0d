#!/bin/sh
# Makes in the working directory a "bin/ssh" that reaches a secure-shell server of its own, whatever the host,
# without a port; the server accepts the key "certificates/USER_rsa" of the current user, not that of "intruder".
# Makes a "source" and an empty directory "disk", too, for rsync. Ends with 77 where a program is missing. The
# first entry of PATH, which may hold another ssh, does not count.
PATH=${PATH#*:}:/usr/sbin
for tool in ssh ssh-keygen sshd rsync unshare; do command -v $tool || exit 77; done >/dev/null
set -e
mkdir bin certificates disk
head -c 400000 /dev/zero >source
for name in host intruder "$(id -un)"; do
    ssh-keygen -q -t ed25519 -N '' -f "certificates/${name}_rsa"
done
[ "$(id -u)" != 0 ] || mkdir -p /run/sshd # root's server insists on it
cat >bin/ssh <<END
#!/bin/sh
exec $(command -v ssh) -F none -o BatchMode=yes -o IdentitiesOnly=yes -o IdentityAgent=none \\
    -o UserKnownHostsFile='$PWD/known_hosts' -o "ProxyCommand $(command -v sshd) -i -f none -o UsePAM=no \\
    -o StrictModes=no -o PermitRootLogin=yes -o HostKey='$PWD/certificates/host_rsa' \\
    -o AuthorizedKeysFile='$PWD/certificates/$(id -un)_rsa.pub'" "\$@"
END
chmod +x bin/ssh
