#!/usr/bin/env python3
"""delaying_relay.py PORT MILLISECONDS: a relay to a server on 127.0.0.1 that hands each request on so much later.

For comparing programs that speak different protocols at one distance. It waits when the client speaks after the server
has, which is the begin of a request, and so once for each exchange on a connection. Says "on http://..." when it listens.
"""

import asyncio
import sys


class Turn:
    """Whose turn it was to speak."""

    def __init__(self):
        self.client_speaks = False


async def to_server(reader, writer, turn, delay):
    while data := await reader.read(65536):
        if not turn.client_speaks:
            turn.client_speaks = True
            await asyncio.sleep(delay)
        writer.write(data)
        await writer.drain()
    writer.close()


async def to_client(reader, writer, turn):
    while data := await reader.read(65536):
        turn.client_speaks = False
        writer.write(data)
        await writer.drain()
    writer.close()


async def main(port, delay):
    async def serve(client_reader, client_writer):
        try:
            server_reader, server_writer = await asyncio.open_connection("127.0.0.1", port)
            turn = Turn()
            await asyncio.gather(
                to_server(client_reader, server_writer, turn, delay), to_client(server_reader, client_writer, turn)
            )
        except OSError:
            client_writer.close()

    server = await asyncio.start_server(serve, "127.0.0.1", 0)
    print(f"relay on http://127.0.0.1:{server.sockets[0].getsockname()[1]}/", flush=True)
    async with server:
        await server.serve_forever()


asyncio.run(main(int(sys.argv[1]), int(sys.argv[2]) / 1000))
