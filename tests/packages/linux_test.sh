#!/bin/bash
# tests/packages/linux_test.sh: installs the Debian package of dist/ into a fresh system, plays a session there as a user
# who has never run it, and removes it again. Needs root, the distribution's archives and mmdebstrap, and takes minutes;
# so it is not part of every run. The last line is "N passed, N failed".
set -u
cd "$(dirname "$0")/../.." || exit 2
. scripts/common.sh
. packaging/common.sh
scripts/install.sh linux-package-test || exit 2
deb=$(ls dist/vktcfgtools_*.deb) || exit 2
simulator=build/release/stage/bin/vkt_sim
work=$(mktemp -dt package.XXXXXX)
root=$work/root
finish() {
    umount "$root/proc" "$root/dev/pts" 2>/dev/null
    rm -rf "$work"
}
trap finish EXIT
. tests/packages/checks.sh
inside() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"; }
files() { (cd "$root" && find etc usr opt -xdev ! -path 'usr/share/*/__pycache__*' | sort); }

say "a fresh system"
# The archives that this system takes its packages from.
sources=()
for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.sources; do
    if [ -s "$file" ]; then sources+=("$file"); fi
done
mmdebstrap --variant=apt --include=xvfb,xauth "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$root" "${sources[@]}" \
    >"$work/bootstrap.log" 2>&1 || { tail "$work/bootstrap.log" && exit 2; }
mount -t proc proc "$root/proc"
mkdir -p "$root/dev/pts" && mount -t devpts devpts "$root/dev/pts" -o gid=5,mode=620,ptmxmode=666 # a view of its own
ln -sf pts/ptmx "$root/dev/ptmx"
cp "$deb" "$root/tmp/package.deb"
inside apt-get -q update >/dev/null
# What the package needs is there before, so that removing it can be seen to leave nothing.
inside apt-get -q install -y --no-install-recommends /tmp/package.deb >/dev/null 2>&1
inside apt-get -q purge -y vktcfgtools >/dev/null 2>&1
files >"$work/before"

say "the package"
check "installing" inside dpkg -i /tmp/package.deb
check "the program links" inside sh -c '! ldd /usr/lib/vktcfgtools/bin/VKTCfgTools | grep "not found"'
cp "$simulator" "$root/usr/local/bin/vkt_sim"
inside useradd -m engineer
cat >"$root/tmp/session.sh" <<'END'
set -e
cd
line=
mkfifo hold said
vkt_sim COM7=VKT531A --report report.txt <hold >said &
exec 5>hold 6<said
until ports=${line#VKT_COM_PORTS=} && [ "$ports" != "$line" ]; do read -r line <&6; done
VKT_COM_PORTS=$ports VKT_DRIVE=/tmp/one.drive xvfb-run -a -s "-screen 0 1600x1000x24" vktcfgtools 1280 750
echo quit >&5
wait
grep -q '^writes=1' report.txt
test -L .local/share/VKTCfgTools/res
END
cat >"$root/tmp/one.drive" <<'END'
pick combo_box_ex_dev VKT531A
wait combo_box_ex_serial option COM7 10000
pick combo_box_ex_serial COM7
click home_page/button
wait progress/label3 text 连接成功 10000
click progress/ok
click button_write
wait progress/label3 text 写配置完成 10000
click progress/ok
close
END
check "vkt knows the timing lists" inside vkt timing --nominal 500K --data 2M
check "vkt has its manual page and completion" inside ls /usr/share/man/man1/vkt.1.gz /usr/share/bash-completion/completions/vkt
check "a session as a new user" inside su - engineer -c 'sh /tmp/session.sh'
rm "$root/usr/local/bin/vkt_sim"
check "removing" inside apt-get -q purge -y vktcfgtools
files >"$work/after"
check "nothing is left" diff <(grep -v '^etc/\(passwd\|group\|shadow\|gshadow\|sub.id\)' "$work/before") \
    <(grep -v '^etc/\(passwd\|group\|shadow\|gshadow\|sub.id\)' "$work/after")
check_end
