"""The packets of a file as ffprobe sees them, per track in the file's order."""
import json
import subprocess
from dataclasses import dataclass


@dataclass
class Packet:
    pts: int            # in units of the file's time scale, None for a lace whose time ffprobe cannot tell
    key: bool
    size: int
    sha1: str


def packets(path, streams):
    """A list of packets for each of the first `streams` streams; attachments come behind the tracks."""
    out = subprocess.run(['ffprobe', '-v', 'error', '-show_packets', '-show_data_hash', 'sha160', '-of', 'json', path],
                         check=True, stdout=subprocess.PIPE).stdout
    result = [[] for _ in range(streams)]
    for p in json.loads(out)['packets']:
        if p['stream_index'] < streams:
            result[p['stream_index']].append(Packet(p.get('pts'), 'K' in p['flags'], int(p['size']),
                                                    p['data_hash'].split(':')[1]))
    return result
