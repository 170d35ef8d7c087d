import { expect, test } from 'vitest';
import { BlockCache } from './blockcache';

function counted(size: number, lie = 0) {
    const asked: number[] = [];
    let broken = 0;
    return {
        asked,
        breakNext: () => void broken++,
        source: {
            size: size + lie,
            range: async (start: number, length: number) => {
                asked.push(start);
                if (broken > 0 && broken--) throw new Error('unreadable');
                return Uint8Array.from({ length: Math.min(length, size - start) }, (_, i) => (start + i) % 251);
            },
        },
    };
}

test('puts blocks together, clamps to the file and asks for each block once', async () => {
    const { source, asked } = counted(100);
    const cache = new BlockCache(source, undefined, 16, 8);
    const parts = await Promise.all([cache.read(10, 40), cache.read(30, 33)]);
    expect([...parts[0]]).toEqual(Array.from({ length: 30 }, (_, i) => 10 + i));
    expect([...parts[1]]).toEqual([30, 31, 32]);
    expect([...(await cache.read(95, 1000))]).toEqual([95, 96, 97, 98, 99]);
    expect((await cache.read(-5, 0)).length + (await cache.read(100, 120)).length).toBe(0);
    expect(asked).toEqual([0, 16, 32, 80, 96]);
});

test('lets go of the blocks used least recently', async () => {
    const { source, asked } = counted(100);
    const cache = new BlockCache(source, undefined, 16, 2);
    for (const at of [0, 16, 0, 32, 0, 16]) await cache.read(at, at + 1);
    expect(asked).toEqual([0, 16, 32, 16]);
});

test('a failed block is asked for again, a file that became shorter is an error', async () => {
    const { source, breakNext } = counted(100);
    const cache = new BlockCache(source, undefined, 16);
    breakNext();
    await expect(cache.read(0, 4)).rejects.toThrow('unreadable');
    expect([...(await cache.read(0, 4))]).toEqual([0, 1, 2, 3]);
    await expect(new BlockCache(counted(50, 50).source, undefined, 16).read(40, 60)).rejects.toThrow('shorter');
});
