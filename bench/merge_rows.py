"""merge_rows.py ROWS... -- PEERS...: joins repeated runs. Takes the smallest of our times and of each peer's, puts the fastest
peer into each row, and counts the goals. Rows are the lines of the benches, peers those of peers_scipy.py."""

import sys


def main(arguments):
    split = arguments.index("--")
    rows, order = {}, []
    for path in arguments[:split]:
        for line in open(path):
            fields = line.rstrip("\n").split(",")
            if len(fields) != 7:
                continue
            kernel, params, ours, peer, peer_ns, _, goal = fields
            key = (kernel, params)
            if key not in rows:
                rows[key] = {"ours": float("inf"), "peers": {}, "goal": goal}
                order.append(key)
            row = rows[key]
            row["ours"] = min(row["ours"], float(ours))
            if peer:
                row["peers"][peer] = min(row["peers"].get(peer, float("inf")), float(peer_ns))
    for path in arguments[split + 1:]:
        for line in open(path):
            fields = line.rstrip("\n").split(",")
            if len(fields) == 4 and (fields[0], fields[1]) in rows:
                peers = rows[fields[0], fields[1]]["peers"]
                peers[fields[2]] = min(peers.get(fields[2], float("inf")), float(fields[3]))
    met = goals = 0
    print("kernel,params,ours_ns,peer,peer_ns,ratio,goal")
    for kernel, params in order:
        row = rows[kernel, params]
        if not row["peers"]:
            print(f"{kernel},{params},{row['ours']:.4g},,,,")
            continue
        peer, peer_ns = min(row["peers"].items(), key=lambda item: item[1])
        ratio = row["ours"] / peer_ns
        print(f"{kernel},{params},{row['ours']:.4g},{peer},{peer_ns:.4g},{ratio:.3g},{row['goal']}")
        if row["goal"]:
            goals += 1
            met += ratio <= float(row["goal"])
    print(f"{met} of {goals} goals met")


main(sys.argv[1:])
